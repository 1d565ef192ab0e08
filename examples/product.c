/* A product of the suite: asks the catalogue who it is, what its certificate says, and which
 * language to run in. With arguments it also asks for an item of another product:
 * product NAME ITEM. */

#include <brevikconfig.h>
#include <stdio.h>
#include <string.h>

static void show_item_of_guid(const char* guid, const char* item) {
    void* value = NULL;
    uint32_t size = 0;
    if (bvkc_CertificateItemValue(guid, item, &value, &size)) {
        printf("  %s: %s\n", item, (const char*)value);
        CoTaskMemFree(value);
    }
}

static int show_item_of_product(const char* product, const char* item) {
    void* value = NULL;
    uint32_t size = 0;
    if (!bvkc_CertificateItemValueByProdName(product, item, &value, &size)) {
        printf("%s is not installed\n", product);
        return 1;
    }
    printf("%s of %s is %s\n", item, product, (const char*)value);
    CoTaskMemFree(value);
    return 0;
}

static void show_own_products(void) {
    char* guids = NULL;
    const int32_t count = bvkc_GetLocalGUIDs(&guids);
    printf("products beside this program: %d\n", (int)count);
    for (const char* guid = guids; guid != NULL && *guid != '\0'; guid += strlen(guid) + 1) {
        printf("%s\n", guid);
        show_item_of_guid(guid, "QDR_ProductName");
        show_item_of_guid(guid, "SKUName");
    }
    CoTaskMemFree(guids);
}

static void show_language(void) {
    const bvkc_langid offered[] = {1033, 1031, 1036};
    bvkc_langid selected = 0;
    if (bvkc_GetUserLanguage_Ids(offered, 3, &selected) == 0) {
        printf("of 1033, 1031 and 1036 this program runs in %d\n", selected);
    }
}

int main(int argc, char** argv) {
    show_own_products();
    show_language();
    return argc == 3 ? show_item_of_product(argv[1], argv[2]) : 0;
}
