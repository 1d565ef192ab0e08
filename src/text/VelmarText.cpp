#include "text/VelmarText.h"

#include <atomic>
#include <cstdio>
#include <ostream>

// Zero before any constructor runs, so texts of every source file may register in any order.
constinit VelmarText* VelmarText::first_ = nullptr;

namespace {

constinit std::atomic<LanguageProvider_IF*> current_provider = nullptr;

Utf8String Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

}  // namespace

VelmarText::VelmarText(long id, const char* text) : VelmarText(text) {
    id_ = id;
    VelmarText** place = &first_;
    while (*place != nullptr && (*place)->id_ < id) {
        place = &(*place)->next_;
    }
    next_ = *place;
    *place = this;
}

VelmarText::~VelmarText() {
    if (!IsRegistered()) {
        return;
    }
    VelmarText** place = &first_;
    while (*place != nullptr && *place != this) {
        place = &(*place)->next_;
    }
    if (*place == this) {
        *place = next_;
    }
}

Utf8String VelmarText::Format(const Utf8StringList& arguments) const {
    Utf8String result = VelmarText::GetText();
    std::size_t position = 0;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        char token[16];
        std::snprintf(token, sizeof token, "%%%d", static_cast<int>(i));
        const Utf8String placeholder = Bytes(token);
        for (std::size_t found; (found = result.find(placeholder, position)) != Utf8String::npos;) {
            result.replace(found, placeholder.size(), arguments[i]);
            position = found + arguments[i].size();
        }
    }
    return result;
}

Utf8String VelmarText::GetText() const {
    if (id_ != 0) {
        Utf8String translation = GetProvider().GetString(id_);
        if (!translation.empty()) {
            return translation;
        }
    }
    return Bytes(text_);
}

const VelmarText* VelmarText::Find(long id) {
    const VelmarText* text = first_;
    while (text != nullptr && text->id_ < id) {
        text = text->next_;
    }
    return text != nullptr && text->id_ == id ? text : nullptr;
}

void VelmarText::Dump(std::ostream& stream) {
    const std::ios_base::fmtflags flags = stream.flags(std::ios_base::right | std::ios_base::dec);
    const LanguageInfo* language = GetLanguageInfo(GetLanguage());
    stream << "\xEF\xBB\xBFVelmarText::Dump() - " << (language != nullptr ? language->code : "")
           << " - " << (language != nullptr ? language->name : "") << '\n';
    for (const VelmarText* text = first_; text != nullptr; text = text->next_) {
        const Utf8String translation = GetProvider().GetString(text->id_);
        stream.width(11);
        stream << text->id_ << ": ";
        if (translation.empty()) {
            stream << "<UNDEFINED>";
        } else {
            stream.write(reinterpret_cast<const char*>(translation.data()),
                         static_cast<std::streamsize>(translation.size()));
        }
        stream << '\n';
    }
    stream.flags(flags);
}

LanguageProvider_IF& VelmarText::GetProvider() {
    LanguageProvider_IF* provider = current_provider.load(std::memory_order_acquire);
    return provider != nullptr ? *provider : LanguageImpl::Instance();
}

void VelmarText::SetProvider(LanguageProvider_IF* provider) {
    current_provider.store(provider, std::memory_order_release);
}
