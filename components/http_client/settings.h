// What the stand-in answers: the settings file beside it, described in docs/http-client.md.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/component_model.h"

namespace HttpClient {

// How one operation ends.
struct Answer {
    HRESULT result = S_OK;
    bool throws = false;  // with an exception in the place of the result
};

struct Settings {
    Answer createInstance;
    Answer runUpdate;
    Answer checkUpdateOrMessage;
    Answer runUpdateInBackground;
    Answer setLocale;
    Answer setParameter;
    Answer getProfileId;
    VARIANT_BOOL available = VARIANT_TRUE;
    std::optional<std::string> profile = "stand-in";  // UTF-8; none: no text is given
    std::chrono::milliseconds delay{0};
};

// Settings from the text of such a file; what it does not name is as above. `misread` receives the
// numbers of the lines that are not understood, from 1; they change nothing.
Settings ParseSettings(const std::string& text, std::vector<int>* misread);

// Path of a file of the host beside this library, of its name with another extension such as
// ".log". Throws std::bad_alloc alone, as do the rest.
std::string PathBeside(const char* extension);

// The settings beside this library as they stand now; a file that is missing or cannot be read
// names none.
Settings ReadSettings(std::vector<int>* misread);

}  // namespace HttpClient
