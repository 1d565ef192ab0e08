/* A host in C: asks for its language and keeps a value in the suite's cookie. */

#include <brevikconfig.h>
#include <stdio.h>

/* Prints wide text that is plain ASCII. */
static void print_ascii(const bvkc_wchar* text) {
    for (; *text != 0; ++text) {
        putchar((int)*text);
    }
    putchar('\n');
}

static void choose_by_identifier(void) {
    const bvkc_langid offered[] = {1031, 1033, 1036};
    bvkc_langid selected = 0;
    if (bvkc_GetUserLanguage_Ids(offered, 3, &selected) == 0) {
        printf("of 1031, 1033 and 1036 I run in %d\n", selected);
    }
}

static void choose_by_code(void) {
    const char* const offered[] = {"FRA", "deu"};
    bvkc_langid selected = 0;
    if (bvkc_GetUserLanguage_Code(offered, 2, &selected) == 0) {
        printf("of FRA and deu I run in %d\n", selected);
    }
}

static void show_value(const bvkc_wchar* key) {
    bvkc_wchar* value = NULL;
    if (bvkc_VCM_ReadOndrelCookieValue(key, &value) == 0) {
        printf("the value of volume is ");
        print_ascii(value);
        CoTaskMemFree(value);
    }
}

int main(void) {
    choose_by_identifier();
    choose_by_code();

    /* UTF-16 texts: L"volume" on Windows, u"volume" elsewhere. */
    const bvkc_wchar key[] = {'v', 'o', 'l', 'u', 'm', 'e', 0};
    const bvkc_wchar loud[] = {'1', '1', 0};
    show_value(key);
    if (bvkc_VCM_WriteOndrelCookieValue(key, loud) != 0) {
        fprintf(stderr, "the value could not be stored\n");
        return 1;
    }
    show_value(key);
    return 0;
}
