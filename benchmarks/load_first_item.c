/* A host's start: loads the library and asks for one item of a certificate. With an argument it
 * then prints how much memory it holds, in KiB. */
#include <brevikconfig.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    void* value = NULL;
    uint32_t size = 0;
    (void)argv;
    if (!bvkc_CertificateItemValue("{PRODUCT-7}", "Field 39", &value, &size) ||
        strcmp(value, "value 39 of product 7") != 0) {
        return 1;
    }
    CoTaskMemFree(value);
    if (argc > 1) {
        char line[256];
        FILE* status = fopen("/proc/self/status", "r");
        if (status == NULL) {
            return 1;
        }
        while (fgets(line, sizeof line, status) != NULL) {
            long kibibytes = 0;
            if (sscanf(line, "VmRSS: %ld kB", &kibibytes) == 1) {
                printf("%ld\n", kibibytes);
            }
        }
        fclose(status);
    }
    return 0;
}
