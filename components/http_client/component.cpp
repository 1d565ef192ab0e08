#include <atomic>
#include <exception>
#include <new>
#include <stdexcept>
#include <thread>

#include "http_client/call_log.h"
#include "http_client/services.h"
#include "http_client/settings.h"
#include "platform/text.h"

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

BSTR TextOf(const std::string& utf8) {
    const int bytes = static_cast<int>(utf8.size());
    const int units =
        bytes == 0 ? 0 : MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(units));
    if (text != nullptr && units > 0) {
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text, units);
    }
    return text;
}

// What both classes have in common: the count of references, and the number in the log.
template <typename Interface, const IID& kInterface>
class Object : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        const bool isKnown = iid == IID_IUnknown || iid == kInterface;
        *object = isKnown ? this : nullptr;
        if (isKnown) {
            AddRef();
        }
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            LogEnd();
            delete this;
        }
        return left;
    }

  protected:
    explicit Object(const char* name) : name_(name) {}
    virtual ~Object() = default;

    Operation Named(int slot, const char* operation) const {
        return {name_, number_, slot, operation};
    }

  private:
    void LogEnd() const noexcept {
        try {
            LogCall(Named(kReleaseSlot, "Release"), {});
        } catch (const std::exception&) {
            // The line is lost.
        }
    }

    const char* name_;
    const unsigned number_ = ++objects_made;
    std::atomic<ULONG> references_ = 1;
};

class UpdateServices final : public Object<IUpdateServices, kUpdateInterface> {
  public:
    static constexpr char kName[] = "UpdateServices";

    UpdateServices() : Object("IUpdateServices") {}

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

  private:
    ~UpdateServices() override = default;
};

class DialogServices final : public Object<IDialogServices, kDialogInterface> {
  public:
    static constexpr char kName[] = "DialogServices";

    DialogServices() : Object("IDialogServices") {}

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
        *profileId = settings.profile ? TextOf(*settings.profile) : nullptr;
        return Give(settings.getProfileId);
    }

  private:
    ~DialogServices() override = default;
};

// Lives as long as the library, whose users hold it loaded, and so counts nothing.
template <typename Class>
class Factory final : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool isKnown = iid == IID_IUnknown || iid == IID_IClassFactory;
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        const Answer answer = Take({"IClassFactory", 0, kCreateInstanceSlot, "CreateInstance"},
                                   {{"class", Class::kName}})
                                  .createInstance;
        if (answer.throws || answer.result != S_OK) {
            return Give(answer);
        }
        auto* const made = new (std::nothrow) Class;
        if (made == nullptr) {
            return E_OUTOFMEMORY;
        }
        const HRESULT result = made->QueryInterface(iid, object);
        made->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

Factory<UpdateServices> update_factory;
Factory<DialogServices> dialog_factory;

}  // namespace
}  // namespace HttpClient

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID classId,
                                                                            REFIID iid,
                                                                            void** object) {
    using namespace HttpClient;
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (classId == kUpdateClass) {
        return update_factory.QueryInterface(iid, object);
    }
    return classId == kDialogClass ? dialog_factory.QueryInterface(iid, object)
                                   : CLASS_E_CLASSNOTAVAILABLE;
}
