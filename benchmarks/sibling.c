/* Stands in for the sibling library: being found and loaded is all that is asked of it. */
__attribute__((visibility("default"))) int sibling_is_here(void) {
    return 1;
}
