// The stand-in for the library of the online services, by itself.

#include <gtest/gtest.h>

#include <string>

#include "modules/ComponentObject.h"
#include "modules/ScopedText.h"
#include "services/SiblingServices.h"
#include "support/child_process.h"
#include "support/stand_in.h"
#include "text/StringConversions.h"

namespace {

using CLibraryUtils::ScopedText;

constexpr ULONG kLanguage = 4294967295u;

class HttpClient : public testing::Test {
  protected:
    template <typename Interface>
    static HRESULT Make(CLibraryUtils::ComponentObject<Interface>& object, REFCLSID classId,
                        REFIID iid) {
        const std::string path =
            "Z:" + (StandIn::SharedFolder() / "VelmarHTTPClient13.dll").string();
        return object.CreateInstance(classId, NarrowToWide(path).c_str(), iid);
    }

    void MakeUpdate() {
        ASSERT_EQ(Make(update_, CLSID_UpdateServices, IID_IUpdateServices), S_OK);
        sibling_.Take();
    }

    CALLS_FOREIGN_OBJECTS
    HRESULT RunUpdate(BSTR text = nullptr) {
        return update_.Get()->RunUpdate(text, nullptr, kLanguage, text);
    }
    CALLS_FOREIGN_OBJECTS
    HRESULT RunUpdateInBackground(BSTR text) {
        return update_.Get()->RunUpdateInBackground(text, nullptr, kLanguage, nullptr);
    }
    CALLS_FOREIGN_OBJECTS
    HRESULT CallNamelessSlot() { return update_.Get()->Slot18(); }

    StandIn sibling_;
    CLibraryUtils::ComponentObject<IUpdateServices> update_;
};

TEST_F(HttpClient, ExportsItsClassObjectsAlone) {
    const ChildResult nm = RunChild({"nm", "-D", "--defined-only", BREVIK_TEST_STAND_IN});
    EXPECT_EQ(nm.output.substr(nm.output.find(' ')), " T DllGetClassObject\n");
}

TEST_F(HttpClient, MakesItsTwoClassesWithTheirOwnInterfacesAlone) {
    CLibraryUtils::ComponentObject<IDialogServices> dialog;
    EXPECT_EQ(Make(update_, IID_IUnknown, IID_IUnknown), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(Make(update_, CLSID_DialogServices, IID_IUpdateServices), E_NOINTERFACE);
    EXPECT_EQ(Make(dialog, CLSID_UpdateServices, IID_IDialogServices), E_NOINTERFACE);
    EXPECT_FALSE(update_);
    EXPECT_FALSE(dialog);
}

TEST_F(HttpClient, SettingsAreReadAtEachCall) {
    MakeUpdate();
    const ScopedText text(NarrowToWide("a\"\\\n\u00E9"));
    EXPECT_EQ(RunUpdate(text.Get()), S_OK);
    EXPECT_EQ(sibling_.Take().front(),
              StandIn::Line("IUpdateServices", 1, 16, "RunUpdate",
                            "\"sku\":\"a\\\"\\\\\\u000a\u00E9\",\"version\":null,\"langId\":"
                            "4294967295,\"productIdentifier\":\"a\\\"\\\\\\u000a\u00E9\""));
    sibling_.Set("# comment\r\n\r\n  RunUpdate=0x80004005\r\n");
    EXPECT_EQ(RunUpdate(), E_FAIL);
    sibling_.Set("RunUpdate = throw\n");
    EXPECT_ANY_THROW(RunUpdate());
    sibling_.Set("RunUpdate = 3\nRunUpdate = many\nnothing\nother = 1\ndelay = -1\n");
    sibling_.Take();
    EXPECT_EQ(RunUpdate(), 3);
    EXPECT_EQ(sibling_.Take().front(), "{\"misread settings\":[2,3,4,5]}");
    EXPECT_EQ(CallNamelessSlot(), E_NOTIMPL);
}

}  // namespace
