#include "http_client/call_log.h"

#include <cstdio>

#include "http_client/settings.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/text.h"

namespace HttpClient {
namespace {

std::string Utf8(BSTR text) {
    return CodePageFromWide(CP_UTF8, {text, SysStringLen(text)});
}

std::string JsonText(const std::string& utf8) {
    std::string json = "\"";
    for (const char byte : utf8) {
        if (byte == '"' || byte == '\\') {
            json += {'\\', byte};
        } else if (static_cast<unsigned char>(byte) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(byte));
            json += escape;
        } else {
            json += byte;
        }
    }
    return json + '"';
}

std::string JsonValue(const Argument& argument) {
    if (const auto* number = std::get_if<long long>(&argument.value)) {
        return std::to_string(*number);
    }
    if (const auto* name = std::get_if<const char*>(&argument.value)) {
        return JsonText(*name);
    }
    const BSTR text = std::get<BSTR>(argument.value);
    return text != nullptr ? JsonText(Utf8(text)) : "null";
}

// One write, so that no other line comes between.
void Append(const std::string& line) {
    const ScopedDescriptor file =
        OpenDescriptor(PathBeside(".log"), O_WRONLY | O_APPEND | O_CREAT, 0644);
    Uninterrupted([&] { return write(file.Get(), line.data(), line.size()); });
}

}  // namespace

void LogCall(const Operation& operation, std::initializer_list<Argument> arguments) {
    std::string list;
    for (const Argument& argument : arguments) {
        list += (list.empty() ? "" : ",") + JsonText(argument.name) + ":" + JsonValue(argument);
    }
    Append("{\"interface\":" + JsonText(operation.interface) + ",\"object\":" +
           std::to_string(operation.object) + ",\"slot\":" + std::to_string(operation.slot) +
           ",\"operation\":" + JsonText(operation.name) + ",\"arguments\":{" + list + "}}\n");
}

void LogMisread(const std::vector<int>& lines) {
    std::string list;
    for (const int line : lines) {
        list += (list.empty() ? "" : ",") + std::to_string(line);
    }
    Append("{\"misread settings\":[" + list + "]}\n");
}

}  // namespace HttpClient
