// The language in which the suite was installed.
//
// It is asked for anew at every call: the catalogue is that of the process, but the registry's word
// on a product's language may change. Any thread.
#pragma once

#include "platform/types.h"

// The language of the first certificate of the catalogue that has one; 0 when none has. Lets out
// what a load of the catalogue throws.
LANGID FindInstalledLanguage();

// The same where a catalogue that cannot be read, as on a machine without the database library,
// counts as one without a language, with one line on the trace: an application needs a language to
// run in, wherever it runs.
LANGID FindInstalledLanguageOrNone();
