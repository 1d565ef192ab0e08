# Small libraries and hosts that tests load or start. They land beside the test programs.

# A component library; tests copy it under the names that they want found.
add_library(test_component MODULE fixtures/component.cpp)
target_link_libraries(test_component PRIVATE brevikplatform)

# Hosts in C.
add_executable(export_host fixtures/export_host.c)
target_link_libraries(export_host PRIVATE brevikconfig ${CMAKE_DL_LIBS})
add_executable(own_names_host fixtures/own_names_host.c)
target_link_libraries(own_names_host PRIVATE brevikconfig)
set_target_properties(own_names_host PROPERTIES ENABLE_EXPORTS ON)
add_executable(loading_host fixtures/loading_host.c)
target_link_libraries(loading_host PRIVATE ${CMAKE_DL_LIBS})

# A library that calls while it is loaded.
add_library(calling_library MODULE fixtures/calling_library.cpp)
target_link_libraries(calling_library PRIVATE brevikconfig)
target_compile_definitions(calling_library PRIVATE
    BREVIK_TEST_READER_COMPONENT="$<TARGET_FILE:brevikcertificatereader>")

target_compile_definitions(test_modules PRIVATE
    BREVIK_TEST_COMPONENT="$<TARGET_FILE:test_component>")
add_dependencies(test_modules test_component)
target_compile_definitions(test_exports PRIVATE
    BREVIK_TEST_COMPONENT="$<TARGET_FILE:test_component>"
    BREVIK_TEST_HOST="$<TARGET_FILE:export_host>"
    BREVIK_TEST_OWN_NAMES_HOST="$<TARGET_FILE:own_names_host>"
    BREVIK_TEST_LOADING_HOST="$<TARGET_FILE:loading_host>"
    BREVIK_TEST_CALLING_LIBRARY="$<TARGET_FILE:calling_library>"
    BREVIK_TEST_LIBRARY="$<TARGET_FILE:brevikconfig>"
    BREVIK_TEST_PLATFORM_LIBRARY="$<TARGET_FILE:brevikplatform>")
add_dependencies(test_exports test_component export_host own_names_host loading_host
                 calling_library)

# Texts for error numbers.
add_library(message_library MODULE fixtures/message_library.cpp)
target_include_directories(message_library PRIVATE ${PROJECT_SOURCE_DIR}/src)
set_target_properties(message_library PROPERTIES PREFIX "")
target_compile_definitions(test_text PRIVATE
    BREVIK_TEST_MESSAGE_LIBRARY="$<TARGET_FILE:message_library>")
foreach(test test_platform test_text)
    if(TARGET ${test})
        add_dependencies(${test} message_library)
    endif()
endforeach()

# A library that has been started as part of another one.
if(TARGET test_filesystem)
    target_compile_definitions(test_filesystem PRIVATE
        BREVIK_TEST_MODULE="$<TARGET_FILE:test_component>")
    add_dependencies(test_filesystem test_component)
endif()

# Libraries to load, and a host that tells what the platform finds.
add_library(plain_library SHARED fixtures/plain_library.c)
add_library(dependent_library MODULE fixtures/dependent_library.c)
target_link_libraries(dependent_library PRIVATE plain_library)
set_target_properties(plain_library dependent_library PROPERTIES
    PREFIX "" BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN")
add_executable(platform_probe fixtures/platform_probe.cpp)
target_link_libraries(platform_probe PRIVATE brevikplatform)
add_executable(file_holder fixtures/file_holder.cpp)
target_link_libraries(file_holder PRIVATE brevikplatform)
if(TARGET test_platform)
    target_compile_definitions(test_platform PRIVATE
        BREVIK_TEST_COMPONENT="$<TARGET_FILE:test_component>")
    add_dependencies(test_platform test_component plain_library dependent_library platform_probe file_holder)
endif()

# A reader for certificates in plain text, a host that reads numbered ones, and a program that shows
# the catalogue.
add_library(text_reader MODULE fixtures/text_reader.cpp)
target_link_libraries(text_reader PRIVATE brevikplatform)
add_executable(record_host fixtures/record_host.cpp)
target_link_libraries(record_host PRIVATE brevikcore)
target_include_directories(record_host PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
add_executable(catalogue_probe fixtures/catalogue_probe.cpp)
target_link_libraries(catalogue_probe PRIVATE brevikcore)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3)
add_executable(plain_sqlite_host fixtures/plain_sqlite_host.cpp)
target_link_libraries(plain_sqlite_host PRIVATE brevikcore PkgConfig::SQLITE)
if(TARGET test_catalogue)
    target_compile_definitions(test_catalogue PRIVATE
        BREVIK_TEST_READER="$<TARGET_FILE:text_reader>"
        BREVIK_TEST_CATALOGUE_PROBE="$<TARGET_FILE:catalogue_probe>"
        BREVIK_TEST_HOST="$<TARGET_FILE:export_host>")
    if(BREVIK_SANITIZE)
        target_compile_definitions(test_catalogue PRIVATE BREVIK_TEST_SANITIZED)
    endif()
    add_dependencies(test_catalogue text_reader record_host catalogue_probe plain_sqlite_host
                     plain_library export_host)
endif()

# The reader component, and the keys that it tests files against here.
foreach(test test_components test_catalogue test_language test_services test_exports test_tools)
    if(TARGET ${test})
        target_compile_definitions(${test} PRIVATE
            BREVIK_TEST_READER_COMPONENT="$<TARGET_FILE:brevikcertificatereader>"
            BREVIK_TEST_KEYS="${PROJECT_SOURCE_DIR}/keys")
        add_dependencies(${test} brevikcertificatereader)
    endif()
endforeach()

# The stand-in for the library of the online services.
foreach(test test_components test_services test_exports test_tools)
    if(TARGET ${test})
        target_compile_definitions(${test} PRIVATE
            BREVIK_TEST_STAND_IN="$<TARGET_FILE:brevikhttpclient>")
        add_dependencies(${test} brevikhttpclient)
    endif()
endforeach()

# What stands for the sibling library before brevikctl doctor, and a library that makes no objects.
if(TARGET test_tools)
    target_compile_definitions(test_tools PRIVATE
        BREVIK_TEST_COMPONENT="$<TARGET_FILE:test_component>"
        BREVIK_TEST_PLAIN_LIBRARY="$<TARGET_FILE:plain_library>")
    add_dependencies(test_tools test_component plain_library)
endif()
