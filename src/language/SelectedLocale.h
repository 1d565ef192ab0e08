// The language code of a call that may leave it open.
#pragma once

#include <string>

// The locale given, or, where it is empty, the code of the language that the suite runs in, chosen
// from all of its languages. Any thread; throws std::bad_alloc alone.
std::string LocaleOrSelected(const std::string& locale);
