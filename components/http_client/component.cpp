#include <atomic>
#include <exception>
#include <stdexcept>
#include <thread>

#include "common/objects.h"
#include "http_client/call_log.h"
#include "http_client/services.h"
#include "http_client/settings.h"

namespace HttpClient {
namespace {

constexpr int kReleaseSlot = 2;
constexpr int kCreateInstanceSlot = 3;  // of a class factory

std::atomic<unsigned> objects_made = 0;

// Writes the call to the log and waits; gives what is to be answered. Where memory is short the
// answers are the usual ones.
Settings Take(const Operation& operation, std::initializer_list<Argument> arguments) noexcept {
    try {
        std::vector<int> misread;
        Settings settings = ReadSettings(&misread);
        if (!misread.empty()) {
            LogMisread(misread);
        }
        LogCall(operation, arguments);
        if (settings.delay.count() > 0) {
            std::this_thread::sleep_for(settings.delay);
        }
        return settings;
    } catch (const std::exception&) {
        return {};
    }
}

HRESULT Give(const Answer& answer) {
    if (answer.throws) {
        throw std::runtime_error("the stand-in's settings say so");
    }
    return answer.result;
}

// A class of the services: its objects have a number in the log.
template <typename Interface, const IID& kInterface>
class Service : public Component::Object<Interface, kInterface> {
  protected:
    explicit Service(const char* name) : name_(name) {}
    ~Service() override {
        try {
            LogCall(Named(kReleaseSlot, "Release"), {});
        } catch (const std::exception&) {
            // The line is lost.
        }
    }

    Operation Named(int slot, const char* operation) const {
        return {name_, number_, slot, operation};
    }

    static HRESULT TakeCreation(const char* className) {
        return Give(Take({"IClassFactory", 0, kCreateInstanceSlot, "CreateInstance"},
                         {{"class", className}})
                        .createInstance);
    }

  private:
    const char* name_;
    const unsigned number_ = ++objects_made;
};

class UpdateServices final : public Service<IUpdateServices, kUpdateInterface> {
  public:
    static constexpr const CLSID& kClassId = kUpdateClass;

    static HRESULT BeforeMaking() { return TakeCreation("UpdateServices"); }

    UpdateServices() : Service("IUpdateServices") {}

    HRESULT STDMETHODCALLTYPE RunUpdate(BSTR sku, BSTR version, ULONG langId,
                                        BSTR productIdentifier) override {
        return Give(Take(Named(16, "RunUpdate"), {{"sku", sku},
                                                  {"version", version},
                                                  {"langId", langId},
                                                  {"productIdentifier", productIdentifier}})
                        .runUpdate);
    }

    HRESULT STDMETHODCALLTYPE CheckUpdateOrMessage(BSTR sku, BSTR version, ULONG langId,
                                                   VARIANT_BOOL connectToServer,
                                                   VARIANT_BOOL* available) override {
        const Settings settings =
            Take(Named(17, "CheckUpdateOrMessage"), {{"sku", sku},
                                                     {"version", version},
                                                     {"langId", langId},
                                                     {"connectToServer", connectToServer}});
        if (available == nullptr) {
            return E_POINTER;
        }
        *available = settings.available;
        return Give(settings.checkUpdateOrMessage);
    }

    HRESULT STDMETHODCALLTYPE RunUpdateInBackground(BSTR sku, BSTR version, ULONG langId,
                                                    BSTR productIdentifier) override {
        return Give(
            Take(Named(20, "RunUpdateInBackground"), {{"sku", sku},
                                                      {"version", version},
                                                      {"langId", langId},
                                                      {"productIdentifier", productIdentifier}})
                .runUpdateInBackground);
    }
};

class DialogServices final : public Service<IDialogServices, kDialogInterface> {
  public:
    static constexpr const CLSID& kClassId = kDialogClass;

    static HRESULT BeforeMaking() { return TakeCreation("DialogServices"); }

    DialogServices() : Service("IDialogServices") {}

    HRESULT STDMETHODCALLTYPE SetLocale(BSTR locale) override {
        return Give(Take(Named(20, "SetLocale"), {{"locale", locale}}).setLocale);
    }

    HRESULT STDMETHODCALLTYPE SetParameter(BSTR name, VARIANT value) override {
        const Argument content =
            value.vt == VT_INT ? Argument("value", value.intVal) : Argument("value", BSTR{nullptr});
        return Give(Take(Named(25, "SetParameter"), {{"name", name}, {"type", value.vt}, content})
                        .setParameter);
    }

    HRESULT STDMETHODCALLTYPE GetProfileID(BSTR kindletUid, ULONG window,
                                           BSTR* profileId) override {
        const Settings settings =
            Take(Named(26, "GetProfileID"), {{"kindletUID", kindletUid}, {"window", window}});
        if (profileId == nullptr) {
            return E_POINTER;
        }
        *profileId = settings.profile
                         ? Component::NewText(WideFromCodePage(CP_UTF8, *settings.profile))
                         : nullptr;
        return Give(settings.getProfileId);
    }
};

}  // namespace
}  // namespace HttpClient

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID classId,
                                                                            REFIID iid,
                                                                            void** object) {
    using namespace HttpClient;
    return Component::FindClassObject<UpdateServices, DialogServices>(classId, iid, object);
}
