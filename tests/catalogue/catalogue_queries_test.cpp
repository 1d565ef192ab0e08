// What the catalogue says about one product.

#include <cstdlib>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "catalogue/queries/CatalogueQueries.h"
#include "catalogue/queries/RegistryQueries.h"
#include "support/catalogue_test.h"

namespace {

bool is_memory_short = false;

}  // namespace

// In place of the platform's, for this program.
void* brevik::platform::CoTaskMemAlloc(std::size_t size) {
    return is_memory_short ? nullptr : std::malloc(size);
}

namespace {

using namespace InstalledProducts;

class Certifier : public CatalogueTest {
  protected:
    // The rows of a certificate with this text.
    SharedHandle<SQLCertificate> Store(const std::string& text) {
        const std::string path = "c:\\store" + std::to_string(++stores_) + ".qzc";
        PutCertificate(path, text);
        CCertificateReference reference;
        EXPECT_EQ(reference.Init(U(path), {}, 0, 0), 1);
        return reference.GetStore();
    }

    std::int32_t Switch(const std::string& name, std::int32_t state,
                        const SharedHandle<SQLCertificate>& store) {
        const std::int32_t result = certifier_.ReadItemSwitch(name, *store, &state);
        EXPECT_EQ(result, state);
        return result;
    }

    CVelmarProductCertifier certifier_;

  private:
    int stores_ = 0;
};

TEST_F(Certifier, ItemIsReadAsASwitch) {
    const auto store = Store(
        "QDR_ProductName = Suite, Mixer, 0\nzero = 0\none = 1\nseven = 7\nbelow = -1\n"
        "word = yes\nlate = x1\nlist = 0, 1\nMixer = 0\n");
    const struct {
        const char* name;
        std::int32_t before;
        std::int32_t after;
    } rows[] = {
        {"zero", -1, 0},
        {"one", -1, 1},
        {"seven", -1, 1},
        {"below", -1, 1},
        {"word", -1, 0},
        {"late", -1, 0},
        {"list", -1, 0},
        {"none", -1, -1},
        {"none", 0, 0},
        {"one", 0, 1},
        {"zero", 1, 1},
        {"zero", 5, 5},
        {"Suite", -1, 1},
        {"Mixer", -1, 1},
        {"Mixer", 0, 1},
        {"0", -1, 1},
        {"", -1, -1},
        {"suite", -1, -1},
        {"QDR_ProductName", -1, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Switch(row.name, row.before, store), row.after)
            << row.name << " from " << row.before;
    }
}

// A certificate whose rows cannot be read behind a certain point.
class FailingStore : public SQLCertificate {
  public:
    FailingStore(bool textFails) : SQLCertificate(nullptr), textFails_(textFails) {}

    void GetFieldAsText(const std::string&, std::string* value) override {
        if (textFails_) {
            throw SQLite3WrapperException("no text");
        }
        *value = "0";
    }
    void GetFieldAsVector(const std::string&, std::vector<std::string>*) override {
        throw _com_error(E_POINTER);
    }

  private:
    bool textFails_;
};

TEST_F(Certifier, FailureOnTheWayLeavesASwitchAsItStands) {
    std::int32_t state = -1;
    FailingStore first(true);
    EXPECT_EQ(certifier_.ReadItemSwitch("x", first, &state), -1);
    FailingStore second(false);
    EXPECT_EQ(certifier_.ReadItemSwitch("x", second, &state), 0);
}

TEST_F(Certifier, RecordStartsWithPlaceholdersAndTakesWhatOneCertificateSays) {
    SetEntry("{G}", {{"Filename", "C:\\x.qzc"},
                     {"Language", "1031"},
                     {"Customization Code", "OEM 7"},
                     {"Version", "12.1"}});
    CertificateProductInfo info;
    certifier_.CollectProductInfo(*Store("x = y\n"), &info, U("Name"), {}, {});
    EXPECT_EQ(info.skuName, "Name");
    EXPECT_EQ(info.productDisplayName, "PRODUCT_NAME");
    EXPECT_EQ(info.enhancedProductDisplayName, "ENHANCED_PRODUCT_NAME");
    EXPECT_TRUE(info.vectorLocation.empty() && info.languageCode.empty());

    certifier_.CollectProductInfo(
        *Store("QDR_ProductID = 42\nVector Location = HKLM\\Some\\{V}\nSKUName = Deluxe\n"
               "QDR_Branding = 3\nQDR_HTMLFolderName = html\nQDR_DialogWidth = 640\n"
               "QDR_DialogHeight = 480\nQDR_ProductDisplayName = Shown\n"
               "QDR_EnhancedProductDisplayName = Shown longer\n"),
        &info, U("Name"), U("{G}"), U("{user}"));
    EXPECT_EQ(info.productId, 42u);
    EXPECT_EQ(N(info.vectorLocation), "HKLM\\Some\\{V}");
    EXPECT_EQ(info.skuName, "Deluxe");
    EXPECT_EQ(N(info.languageCode), "deu");
    EXPECT_EQ(info.languageId, 1031u);
    EXPECT_EQ(info.branding, 3u);
    EXPECT_EQ(info.htmlFolderName, "html");
    EXPECT_EQ(N(info.installerGuid), "{G}");
    EXPECT_EQ(info.productDisplayName, "Shown");
    EXPECT_EQ(info.enhancedProductDisplayName, "Shown longer");
    EXPECT_EQ(info.customizationCode, "OEM 7");
    EXPECT_EQ(info.version, "12.1");
    EXPECT_EQ(info.dialogWidth, 640);
    EXPECT_EQ(info.dialogHeight, 480);
    EXPECT_EQ(info.usedBy, "{user}");
}

TEST_F(Certifier, SeveralCertificatesOfOneProductFeedOneRecord) {
    SetEntry("{1}", {{"Version", "1"}});
    SetEntry("{2}", {{"Version", "2"}, {"Customization Code", "late"}, {"Language", "1036"}});
    const std::string product = "QDR_ProductID = 42\nVector Location = here\n";
    CertificateProductInfo info;
    certifier_.CollectProductInfo(
        *Store(product + "SKUName = First\nQDR_Branding = 1\nQDR_HTMLFolderName = one\n"
                         "QDR_DialogWidth = 640\nQDR_DialogHeight = 300\n"
                         "QDR_ProductDisplayName = Shown\n"),
        &info, U("Name"), U("{1}"), U("{u1}"));
    const std::string smaller =
        "QDR_DialogWidth = 200\nQDR_DialogHeight = 480\nQDR_EnhancedProductDisplayName = More\n";
    certifier_.CollectProductInfo(*Store(product + smaller), &info, U("Other name"), U("{2}"),
                                  U("{u2}"));
    // The last one's.
    EXPECT_EQ(info.skuName, "Other name");
    EXPECT_EQ(info.branding, 0u);
    EXPECT_EQ(info.usedBy, "{u2}");
    // The first one's.
    EXPECT_EQ(N(info.installerGuid), "{1}");
    EXPECT_EQ(info.version, "1");
    EXPECT_EQ(info.customizationCode, "");
    // The first that says something, the last that does, and the largest.
    EXPECT_EQ(N(info.languageCode), "fra");
    EXPECT_EQ(info.languageId, 1036u);
    EXPECT_EQ(info.productDisplayName, "Shown");
    EXPECT_EQ(info.enhancedProductDisplayName, "More");
    EXPECT_EQ(info.dialogWidth, 640);
    EXPECT_EQ(info.dialogHeight, 480);

    CertificateProductInfo placeless;
    certifier_.CollectProductInfo(*Store("QDR_ProductID = 42\n"), &placeless, {}, {}, {});
    certifier_.CollectProductInfo(*Store("QDR_ProductID = 43\nVector Location = there\n"),
                                  &placeless, {}, {}, {});
    EXPECT_TRUE(placeless.vectorLocation.empty());
    for (const char* stranger :
         {"QDR_ProductID = 43\nVector Location = here\n",
          "QDR_ProductID = 42\nVector Location = there\n", "Vector Location = here\n"}) {
        certifier_.CollectProductInfo(
            *Store(stranger + std::string("SKUName = Stranger\nQDR_DialogWidth = 9999\n")), &info,
            U("Stranger"), U("{3}"), {});
        EXPECT_EQ(info.skuName, "Other name") << stranger;
        EXPECT_EQ(info.dialogWidth, 640) << stranger;
        EXPECT_EQ(info.productId, 42u) << stranger;
        EXPECT_EQ(N(info.vectorLocation), "here") << stranger;
    }
}

TEST_F(Certifier, LanguageIsTheNumberAtTheStartOfTheText) {
    const struct {
        const char* text;
        bool found;
        std::uint32_t id;
        const char* code;
    } rows[] = {
        {"1031", true, 1031, "deu"},
        {"  1036 or so", true, 1036, "fra"},
        {"1046x", true, 1046, "ptb"},
        {"German", true, 0, "enu"},
        {"", true, 0, "enu"},
        {"-1031", true, 0, "enu"},
        {"hex(1):31,00,30,00,34,00,30,00", true, 1040, "ita"},  // stored without its NUL
        {"99999999999999999999999", true, 0xFFFFFFFF, ""},
    };
    for (const auto& row : rows) {
        SetEntry("{G}", {{"Language", row.text}});
        Utf8String code = U("before");
        std::uint32_t id = 7;
        EXPECT_EQ(ReadProductLanguage(U("{G}"), &code, &id), row.found) << row.text;
        EXPECT_EQ(id, row.id) << row.text;
        EXPECT_EQ(N(code), row.code) << row.text;
    }
    SetEntry("{no language}", {{"Filename", "x"}});
    SetEntry("{too long}", {{"Language", std::string(260, '1')}});
    for (const char* guid : {"{no language}", "{too long}", "{no key}"}) {
        Utf8String code = U("before");
        std::uint32_t id = 7;
        EXPECT_FALSE(ReadProductLanguage(U(guid), &code, &id)) << guid;
        EXPECT_EQ(id, 7u) << guid;
        EXPECT_EQ(N(code), "before") << guid;
    }
}

TEST_F(Certifier, ValidatedCertificateComesWithItsUser) {
    Install("{G}", "C:\\g.qzc", "Mixer");
    AddToRegistry(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{G}]\n"
        "\"UsedBy\"=\"{user}\"\n");
    CBrevikKitCertificateMgr manager;
    Utf8String guid = U("before");
    Utf8String usedBy = U("before");
    EXPECT_EQ(certifier_.FindValidatedCertificate(manager, U("Other"), &guid, &usedBy), nullptr);
    EXPECT_EQ(N(guid) + N(usedBy), "beforebefore");
    const auto store = certifier_.FindValidatedCertificate(manager, U("MIXER"), &guid, &usedBy);
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(store->GetKey(), "c:\\g.qzc");
    EXPECT_EQ(N(guid) + N(usedBy), "{G}{user}");
}

TEST_F(Certifier, QueryWithoutMemoryLeavesItsOutArguments) {
    Install("{G}", "C:\\g.qzc", "Mixer", "x = y\n");
    void* value = &value;
    std::uint32_t size = 9;
    char list[] = "before";
    char* guids = list;
    is_memory_short = true;
    EXPECT_FALSE(CatalogueQueries::CertificateItemValue("{G}", "x", &value, &size));
    EXPECT_FALSE(CatalogueQueries::CertificateItemValueByProdName("Mixer", "x", &value, &size));
    EXPECT_EQ(CatalogueQueries::GetLocalGUIDs(&guids), 0);
    EXPECT_EQ(value, static_cast<void*>(&value));
    EXPECT_EQ(size, 9u);
    EXPECT_EQ(guids, list);
    is_memory_short = false;
    EXPECT_TRUE(CatalogueQueries::CertificateItemValue("{G}", "x", &value, &size));
    EXPECT_STREQ(static_cast<const char*>(value), "y");
    CoTaskMemFree(value);
}

TEST(SplitRegistryPath, KnowsNineRootsByTheirExactNames) {
    const struct {
        const char* text;
        std::uintptr_t root;  // 0 for an unknown one
        const char* subKey;
    } rows[] = {
        {"HKEY_CLASSES_ROOT\\x", 0x80000000, "x"},
        {"HKEY_CURRENT_USER\\x", 0x80000001, "x"},
        {"HKEY_LOCAL_MACHINE\\SOFTWARE\\x", 0x80000002, "SOFTWARE\\x"},
        {"HKEY_USERS\\", 0x80000003, ""},
        {"HKEY_PERFORMANCE_DATA\\x", 0x80000004, "x"},
        {"HKEY_PERFORMANCE_TEXT\\x", 0x80000050, "x"},
        {"HKEY_PERFORMANCE_NLSTEXT\\x", 0x80000060, "x"},
        {"HKEY_CURRENT_CONFIG\\x", 0x80000005, "x"},
        {"HKEY_DYN_DATA\\x", 0x80000006, "x"},
        {"HKEY_LOCAL_MACHINE", 0x80000002, "HKEY_LOCAL_MACHINE"},
        {"hkey_local_machine\\SOFTWARE\\x", 0, "SOFTWARE\\x"},
        {"HKEY_LOCAL_MACHINE \\x", 0, "x"},
        {"HKEY\\x", 0, "x"},
        {"\\x", 0, "x"},
        {"", 0, ""},
    };
    for (const auto& row : rows) {
        HKEY root = nullptr;
        Utf8String subKey = U("before");
        EXPECT_EQ(SplitRegistryPath(U(row.text), &root, &subKey), row.root != 0 ? 1 : 0)
            << row.text;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(root), row.root) << row.text;
        EXPECT_EQ(N(subKey), row.subKey) << row.text;
    }
}

}  // namespace
