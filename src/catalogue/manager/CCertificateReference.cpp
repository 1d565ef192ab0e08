#include "catalogue/manager/CCertificateReference.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/VerificationKey.h"
#include "catalogue/manager/CertificateSources.h"
#include "catalogue/records/SharedFolder.h"
#include "platform/registry.h"
#include "registry/ReadStringList.h"
#include "trace/UTrace.h"

namespace {

constexpr std::uint32_t kProcessingCertificates = 1;

constexpr char kProductNameField[] = "QDR_ProductName";
constexpr char kLocationField[] = "Vector Location";

// What follows the last backslash; all of a text without one.
Utf8String LastComponent(const Utf8String& location) {
    return location.substr(location.rfind('\\') + 1);
}

// The first text of the installation's "UsedBy"; empty without one.
Utf8String ReadUsedBy(const Utf8String& guid) {
    std::vector<WideString> users;
    ReadStringList(HKEY_LOCAL_MACHINE, CertificateSources::UninstallKeyOf(guid).c_str(),
                   WIDE("UsedBy"), &users);
    return users.empty() ? Utf8String() : WideToUtf8(users.front());
}

}  // namespace

std::uint8_t CCertificateReference::Init(const Utf8String& path, const Utf8String& guid,
                                         std::uint32_t mode, std::uint8_t reimport) {
    SetGUID(guid);
    path_ = path;
    if (mode == kProcessingCertificates) {
        ShareCertificateFile(Utf8ToWide(path));
    }
    store_ = std::make_shared<SQLCertificate>();
    const std::string narrowPath = Utf8ToNarrow(path);
    UTrace::Info("CCertificateReference::Init(), certPath = %s", narrowPath.c_str());
    if (!store_->Read(narrowPath.c_str(), kVerificationKey, reimport != 0)) {
        return 0;
    }
    ReadFieldList(*store_, kProductNameField, &productNames_);
    if (guid.empty()) {
        const Utf8String location = GetPathField(NarrowToUtf8(kLocationField));
        if (!location.empty()) {
            SetGUID(LastComponent(location));
        }
    }
    return 1;
}

Utf8String CCertificateReference::GetGUID() const {
    const std::lock_guard lock(mutex_);
    return guid_;
}

void CCertificateReference::SetGUID(const Utf8String& guid) {
    const std::lock_guard lock(mutex_);
    guid_ = guid;
    usedBy_.clear();
}

Utf8String CCertificateReference::GetUsedBy() {
    const std::lock_guard lock(mutex_);
    if (usedBy_.empty() && !guid_.empty()) {
        usedBy_ = ReadUsedBy(guid_);
    }
    return usedBy_;
}

std::uint8_t CCertificateReference::HasProductName(const Utf8String& name) const {
    return std::any_of(productNames_.begin(), productNames_.end(),
                       [&](const Utf8String& known) { return EqualNoCase(known, name); });
}

std::uint8_t CCertificateReference::HasField(const Utf8String& name) const {
    return store_ != nullptr && store_->HasField(Utf8ToNarrow(name));
}

Utf8String CCertificateReference::GetPathField(const Utf8String& name) const {
    return store_ != nullptr ? NarrowToUtf8(ReadField(*store_, Utf8ToNarrow(name))) : Utf8String();
}
