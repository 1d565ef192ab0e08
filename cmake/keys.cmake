# The public keys that certificate files are tested against, as `brevikctl certificate keygen` prints
# them. Those that stand here are for development alone: their private halves lie in keys/.

set(BREVIK_DEVELOPMENT_KEY
    "c184827648310c63f3961a2069581d09dd383ba0c1a7d548214ad8679c1b3ce2-b60834861f2d7c3982f2fd0a23cdc3c18127496b27e23e24107c1fc42372b29a5")
set(BREVIK_VERIFICATION_KEY "${BREVIK_DEVELOPMENT_KEY}" CACHE STRING
    "Text of the two public keys of certificate files, 130 characters")
string(LENGTH "${BREVIK_VERIFICATION_KEY}" key_length)
string(FIND "${BREVIK_VERIFICATION_KEY}" "-" key_middle)
if(NOT key_length EQUAL 130 OR NOT key_middle EQUAL 64
   OR NOT BREVIK_VERIFICATION_KEY MATCHES "^[0-9A-Fa-f]+-[0-9A-Fa-f]+$")
    message(FATAL_ERROR "BREVIK_VERIFICATION_KEY is no text of 130 characters with two keys")
endif()
if(BREVIK_VERIFICATION_KEY STREQUAL BREVIK_DEVELOPMENT_KEY)
    message(STATUS "Certificate files are tested against the development keys")
endif()
