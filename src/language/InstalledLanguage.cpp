#include "language/InstalledLanguage.h"

// The language comes from the certificates of the installed products. The library does not read
// certificates yet, so there is none.
LANGID FindInstalledLanguage() {
    return 0;
}
