# The public keys that certificate files are tested against, as `brevikctl certificate keygen` prints
# them. Those that stand here are for development alone: their private halves lie in keys/.

set(BREVIK_DEVELOPMENT_KEY
    "c184827648310c63f3961a2069581d09dd383ba0c1a7d548214ad8679c1b3ce2-b60834861f2d7c3982f2fd0a23cdc3c18127496b27e23e24107c1fc42372b29a5")
set(BREVIK_VERIFICATION_KEY "${BREVIK_DEVELOPMENT_KEY}" CACHE STRING
    "Text of the two public keys of certificate files, 130 characters")
option(BREVIK_DEVELOPMENT_KEYS "Build also with a development key among the two" ON)

string(TOLOWER "${BREVIK_VERIFICATION_KEY}" key)
string(LENGTH "${key}" key_length)
string(FIND "${key}" "-" key_middle)
if(NOT key_length EQUAL 130 OR NOT key_middle EQUAL 64 OR NOT key MATCHES "^[0-9a-f]+-[0-9a-f]+$")
    message(FATAL_ERROR "BREVIK_VERIFICATION_KEY is no text of 130 characters with two keys")
endif()
# Every second digit counts double, in hexadecimal; the check digit, which is the last, makes the sum
# a multiple of 16.
string(REPLACE "-" "" key_digits "${key}")
set(key_sum 0)
foreach(index RANGE 128)
    string(SUBSTRING "${key_digits}" ${index} 1 digit)
    math(EXPR value "0x${digit} * (1 + ${index} % 2)")
    math(EXPR key_sum "${key_sum} + ${value} / 16 + ${value} % 16")
endforeach()
math(EXPR key_rest "${key_sum} % 16")
if(NOT key_rest EQUAL 0)
    message(FATAL_ERROR "BREVIK_VERIFICATION_KEY was copied wrongly: its check digit does not fit")
endif()

set(BREVIK_KEY_NOTE "")
string(SUBSTRING "${BREVIK_DEVELOPMENT_KEY}" 0 64 development_present)
string(SUBSTRING "${BREVIK_DEVELOPMENT_KEY}" 65 64 development_next)
if(key MATCHES "${development_present}|${development_next}")
    set(BREVIK_KEY_NOTE "built with a development key: anybody can sign certificates that are good here")
    if(NOT BREVIK_DEVELOPMENT_KEYS)
        message(FATAL_ERROR
            "A package is built with keys of its own: -DBREVIK_VERIFICATION_KEY=TEXT, with the text that "
            "`brevikctl certificate keygen --present` prints. One to try, with the development keys, "
            "takes -DBREVIK_DEVELOPMENT_KEYS=ON.")
    endif()
    message(STATUS "This is ${BREVIK_KEY_NOTE}")
endif()
