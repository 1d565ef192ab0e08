// The reader component as the library makes it, and what it says of files that are not right.

#include "certificate_reader/reader.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/VerificationKey.h"
#include "support/drive_files.h"
#include "support/registry_machine.h"

namespace {

namespace fs = std::filesystem;
using namespace CertificateKeys;
using CertificateReader::IReader;
using CertificateReader::ResultOf;
using Fault = CertificateFault;

const std::string kText = "QDR_ProductName = Caf\xC3\xA9\r\nVector Location = a\\{G}\r\n";

struct FreeText {
    void operator()(WCHAR* text) const { SysFreeString(text); }
};
using ScopedText = std::unique_ptr<WCHAR, FreeText>;

ScopedText MakeText(const std::string& text) {
    const WideString wide = WideFromUtf8(text);
    return ScopedText(SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size())));
}

struct Answer {
    HRESULT result = S_OK;
    std::string text;
    bool isNull = false;

    bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
    *out << std::hex << static_cast<unsigned>(answer.result) << (answer.isNull ? " null" : " ")
         << answer.text;
}

Answer NoText(HRESULT result) {
    return {result, "", true};
}
Answer NoText(Fault fault) {
    return NoText(ResultOf(fault));
}

class Reader : public RegistryMachine {
  protected:
    void SetUp() override {
        RegistryMachine::SetUp();
        folder_ = NewFolder("Certificates");
        WriteRegistry("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\" +
                      std::string(CertificateReader::kClassText) +
                      "\\InprocServer32]\n@=\"Z:" BREVIK_TEST_READER_COMPONENT "\"\n");
        ASSERT_EQ(CoInitialize(nullptr), S_OK);
        reader_ = Make();
        ASSERT_NE(reader_, nullptr);
    }
    void TearDown() override {
        reader_->Release();
        CoUninitialize();
    }

    static IReader* Make() {
        void* object = nullptr;
        CoCreateInstance(CertificateReader::kClass, nullptr, 0x17, CertificateReader::kInterface,
                         &object);
        return static_cast<IReader*>(object);
    }

    // What the component gives for a file with these bytes.
    Answer Read(const std::string& bytes, const std::string& key = kVerificationKey) {
        WriteHostFile(folder_ / "product.qzc", bytes);
        return ReadPath("c:\\certificates\\product.qzc", key);
    }

    Answer ReadPath(const std::string& path, const std::string& key = kVerificationKey) {
        Answer answer;
        answer.result = reader_->OpenFile(MakeText(path).get(), MakeText(key).get());
        BSTR text = reinterpret_cast<BSTR>(this);
        EXPECT_EQ(reader_->GetText(&text), answer.result);
        answer.isNull = text == nullptr;
        answer.text = Utf8FromWide({text, SysStringLen(text)});
        SysFreeString(text);
        return answer;
    }

    fs::path folder_;
    IReader* reader_ = nullptr;
};

PrivateKey KeyOfFile(const char* name) {
    return *PrivateKey::Parse(ReadHostFile(fs::path(BREVIK_TEST_KEYS) / name));
}

PrivateKey Present() {
    return KeyOfFile("DEVELOPMENT-ONLY-private-key.txt");
}
PrivateKey Next() {
    return KeyOfFile("DEVELOPMENT-ONLY-next-private-key.txt");
}

TEST_F(Reader, GivesTheTextOfAFileSignedByThePresentOrTheNextKey) {
    EXPECT_EQ(Read(MakeCertificate(kText, Present())), (Answer{S_OK, kText}));
    EXPECT_EQ(Read(MakeCertificate(kText, Next())), (Answer{S_OK, kText}));
    EXPECT_EQ(Read(MakeCertificate("", Present())), (Answer{S_OK, ""}));
    EXPECT_EQ(Read(MakeCertificate(kText, PrivateKey::Make())), NoText(Fault::kBadSignature));
}

TEST_F(Reader, GivesNoTextOfAFileWithOneBitChanged) {
    const std::string good = MakeCertificate(kText, Present());
    ASSERT_EQ(Read(good).text, kText);
    for (std::size_t bit = 0; bit < 8 * good.size(); ++bit) {
        std::string bytes = good;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
        const Answer answer = Read(bytes);
        ASSERT_TRUE(FAILED(answer.result) && answer.isNull) << "bit " << bit;
        const Fault fault = bit / 8 < 19   ? Fault::kForeign
                            : bit / 8 < 20 ? Fault::kUnknownVersion
                            : bit / 8 < 24 ? Fault::kCut
                                           : Fault::kBadSignature;
        ASSERT_EQ(answer.result, ResultOf(fault)) << "bit " << bit;
    }
}

TEST_F(Reader, GivesNoTextOfAFileThatWasCutOrGrew) {
    const std::string good = MakeCertificate(kText, Present());
    for (std::size_t size = 0; size < good.size(); ++size) {
        ASSERT_EQ(Read(good.substr(0, size)), NoText(Fault::kCut)) << size;
    }
    EXPECT_EQ(Read(good + '\0'), NoText(Fault::kCut));
    EXPECT_EQ(Read(good + good), NoText(Fault::kCut));
    EXPECT_EQ(Read(kText), NoText(Fault::kForeign));
}

TEST_F(Reader, HasABoundOnTheSizeOfAFile) {
    const std::string largest(kLargestCertificateFile - kCertificateFrameSize, 'x');
    EXPECT_TRUE(Read(MakeCertificate(largest, Present())) == (Answer{S_OK, largest}));
    EXPECT_EQ(Read(MakeCertificate(largest + 'x', Present())), NoText(Fault::kTooLarge));
}

TEST_F(Reader, GivesNoTextUnderAMalformedKey) {
    const std::string file = MakeCertificate(kText, Present());
    const std::string key = kVerificationKey;
    std::string upper = key;
    for (char& digit : upper) {
        digit = static_cast<char>(toupper(digit));
    }
    EXPECT_EQ(Read(file, upper).text, kText);
    std::vector<std::string> malformed = {"", key.substr(1), key + "0",
                                          key.substr(0, 129) + "\xC3"};
    for (std::size_t index = 0; index < key.size(); ++index) {
        std::string changed = key;
        changed[index] = key[index] == '7' ? '8' : '7';
        malformed.push_back(changed);
        changed[index] = 'g';
        malformed.push_back(changed);
    }
    for (const std::string& text : malformed) {
        EXPECT_EQ(Read(file, text), NoText(Fault::kBadKey)) << text;
    }
    EXPECT_EQ(reader_->OpenFile(nullptr, nullptr), ResultOf(Fault::kBadKey));
}

TEST_F(Reader, TellsWhatTheSystemSaysOfAFile) {
    EXPECT_EQ(ReadPath("C:\\Certificates\\none.qzc"), NoText(MakeHResult(0x80070002)));
    EXPECT_EQ(ReadPath("C:\\none\\none.qzc"), NoText(MakeHResult(0x80070003)));
    EXPECT_EQ(ReadPath("C:\\Certificates"), NoText(MakeHResult(0x80070005)));
    EXPECT_EQ(ReadPath(""), NoText(MakeHResult(0x80070003)));
    // A pipe is not waited for.
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(ReadPath("C:\\Certificates\\pipe").isNull);

    // A file that fails takes the text of the one before away, and another brings its own.
    ASSERT_EQ(Read(MakeCertificate(kText, Present())).text, kText);
    EXPECT_EQ(Read("other"), NoText(Fault::kForeign));
    EXPECT_EQ(Read(MakeCertificate("a=b", Present())).text, "a=b");
}

TEST_F(Reader, AnswersAsAComponentShould) {
    BSTR text = reinterpret_cast<BSTR>(this);
    EXPECT_EQ(reader_->GetText(&text), E_UNEXPECTED);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(reader_->GetText(nullptr), E_POINTER);
    // The two operations stand in their slots.
    using Slot = HRESULT (*)(IReader*, void*);
    Slot* const slots = *reinterpret_cast<Slot**>(reader_);
    for (const int slot : {3, 4, 5, 6, 8, 9, 10}) {
        EXPECT_EQ(slots[slot](reader_, nullptr), E_NOTIMPL) << slot;
    }
    EXPECT_EQ(slots[11](reader_, nullptr), E_POINTER);
    EXPECT_EQ((reinterpret_cast<HRESULT (*)(IReader*, BSTR, BSTR)>(
                  reinterpret_cast<void*>(slots[7])))(reader_, nullptr, nullptr),
              ResultOf(Fault::kBadKey));

    void* object = nullptr;
    EXPECT_EQ(reader_->QueryInterface(IID_IUnknown, &object), S_OK);
    EXPECT_EQ(reader_->Release(), 1u);
    EXPECT_EQ(reader_->QueryInterface(IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CoCreateInstance(CertificateReader::kClass, reader_, 0x17, IID_IUnknown, &object),
              CLASS_E_NOAGGREGATION);

    void* const library = dlopen(BREVIK_TEST_READER_COMPONENT, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    const auto getClassObject = reinterpret_cast<HRESULT (*)(REFCLSID, REFIID, void**)>(
        dlsym(library, "DllGetClassObject"));
    EXPECT_EQ(getClassObject(CLSID{}, IID_IUnknown, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(getClassObject(CertificateReader::kClass, CertificateReader::kInterface, &object),
              E_NOINTERFACE);
    dlclose(library);
}

TEST_F(Reader, ReadsOnManyThreadsAtOnce) {
    WriteHostFile(folder_ / "product.qzc", MakeCertificate(kText, Present()));
    std::vector<std::thread> threads;
    for (int count = 0; count < 8; ++count) {
        threads.emplace_back([] {
            CoInitialize(nullptr);
            IReader* const reader = Make();
            BSTR text = nullptr;
            reader->OpenFile(MakeText("C:\\Certificates\\product.qzc").get(),
                             MakeText(kVerificationKey).get());
            EXPECT_EQ(reader->GetText(&text), S_OK);
            EXPECT_EQ(Utf8FromWide({text, SysStringLen(text)}), kText);
            SysFreeString(text);
            reader->Release();
            CoUninitialize();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(Keys, ComeBackFromTheirTexts) {
    const PrivateKey key = PrivateKey::Make();
    const auto read = PrivateKey::Parse(key.FileText());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->Public(), key.Public());
    EXPECT_EQ(read->Sign("m"), key.Sign("m"));
    EXPECT_NE(PrivateKey::Make().Public(), key.Public());
    const std::string digits(64, '1');
    for (const std::string& text : {std::string(), std::string("# only a remark\n"), digits + "1\n",
                                    digits + "\n" + digits, digits.substr(1), " " + digits}) {
        EXPECT_FALSE(PrivateKey::Parse(text)) << text;
    }
    EXPECT_TRUE(PrivateKey::Parse("\r\n#\r\n" + digits));
}

// Two digits that changed places are told, but for 0 and f, which the sum cannot tell apart.
TEST(Keys, ACheckDigitTellsDigitsThatChangedPlaces) {
    const std::string key = kVerificationKey;
    for (std::size_t index = 0; index + 1 < key.size(); ++index) {
        std::string changed = key;
        std::swap(changed[index], changed[index + 1]);
        const std::string pair = key.substr(index, 2);
        if (changed != key && pair != "0f" && pair != "f0") {
            EXPECT_FALSE(ParseVerificationText(changed)) << index;
        }
    }
}

}  // namespace
