// The language in which the suite was installed.
#pragma once

#include "platform/types.h"

// 0 when none is found.
LANGID FindInstalledLanguage();
