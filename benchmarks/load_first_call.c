/* A host's start: loads the library and makes one call. With an argument it then prints its memory
 * map, which names every library that the call has brought in. */
#include <brevikconfig.h>
#include <stdio.h>

int main(int argc, char** argv) {
    (void)argv;
    const bvkc_langid offered[] = {1031, 1033, 1036};
    bvkc_langid selected = 0;
    if (bvkc_GetUserLanguage_Ids(offered, 3, &selected) != 0 || selected != 1033) {
        return 1;
    }
    if (argc > 1) {
        FILE* map = fopen("/proc/self/maps", "r");
        if (map == NULL) {
            return 1;
        }
        for (int byte = fgetc(map); byte != EOF; byte = fgetc(map)) {
            putchar(byte);
        }
        fclose(map);
    }
    return 0;
}
