# One helper makes a module's library, one a test program. The folders and what each may use come from layers.txt.
# The target of the folder a/b is a_b.

set(DREVIX_MODULES)
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/layers.txt" drevix_layers REGEX "^[a-z0-9/]+:")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/layers.txt")
foreach(line IN LISTS drevix_layers)
    string(REGEX MATCH "^([a-z0-9/]+): ?(.*)$" matched "${line}")
    set(module "${CMAKE_MATCH_1}")
    string(REPLACE " " ";" uses "${CMAKE_MATCH_2}")
    string(REPLACE "/" "_" uses "${uses}")
    list(APPEND DREVIX_MODULES ${module})
    set(DREVIX_USES_${module} ${uses})
endforeach()

# What a program outside the folders (a benchmark, a fuzzer) may link: every folder that is a library.
string(REPLACE "/" "_" DREVIX_MODULES_FOR_PROGRAMS "${DREVIX_MODULES}")
list(REMOVE_ITEM DREVIX_MODULES_FOR_PROGRAMS keyboard_qt helper cli pane host)

# What every target of this project is compiled with. Where the sources of a folder are compiled together, GCC takes what is
# local to one for a header's.
add_library(drevix_options INTERFACE)
target_include_directories(drevix_options INTERFACE "${PROJECT_SOURCE_DIR}")
# The one version number, which a settings file is stamped with.
target_compile_definitions(drevix_options INTERFACE DREVIX_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
    DREVIX_VERSION_MINOR=${PROJECT_VERSION_MINOR} DREVIX_VERSION_PATCH=${PROJECT_VERSION_PATCH})
target_compile_options(drevix_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
    -Woverloaded-virtual $<$<BOOL:${DREVIX_WERROR}>:-Werror> $<$<AND:$<BOOL:${CMAKE_UNITY_BUILD}>,$<CXX_COMPILER_ID:GNU>>:-Wno-subobject-linkage>)

# drevix_module(FOLDER [LIBRARIES ...] [EXCEPT ...]): the static library of that folder, with every source in it but those
# after EXCEPT. It links what layers.txt lets it include; LIBRARIES are third-party libraries (platform/ has some, and pane/).
# The libraries can be linked into the panel's plug-in, and show nothing of themselves in it.
function(drevix_module folder)
    cmake_parse_arguments(arg "" "" "LIBRARIES;EXCEPT" ${ARGN})
    string(REPLACE "/" "_" name "${folder}")
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    foreach(except IN LISTS arg_EXCEPT)
        list(REMOVE_ITEM sources "${CMAKE_CURRENT_SOURCE_DIR}/${except}")
    endforeach()
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${name} PUBLIC drevix_options ${DREVIX_USES_${folder}} PRIVATE ${arg_LIBRARIES})
    drevix_check_headers(${name})
endfunction()

# Every header of the calling folder compiles alone. One with a source of its name is shown to by that, which includes it
# first.
function(drevix_check_headers name)
    if(NOT DREVIX_HEADER_CHECKS)
        return()
    endif()
    file(GLOB headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
    set(sources)
    foreach(header IN LISTS headers)
        string(REGEX REPLACE "h$" "cpp" own "${header}")
        if(EXISTS "${PROJECT_SOURCE_DIR}/${own}")
            continue()
        endif()
        set(source "${CMAKE_CURRENT_BINARY_DIR}/header_${name}/${header}.cpp")
        file(GENERATE OUTPUT "${source}" CONTENT "#include \"${header}\"\n")
        list(APPEND sources "${source}")
    endforeach()
    if(sources)
        add_library(headers_${name} OBJECT ${sources})
        target_link_libraries(headers_${name} PRIVATE drevix_options)
    endif()
endfunction()

# drevix_manual(PROGRAM): installs the manual page PROGRAM.1 of the calling folder, compressed.
function(drevix_manual program)
    set(page "${CMAKE_CURRENT_SOURCE_DIR}/${program}.1")
    set(packed "${CMAKE_CURRENT_BINARY_DIR}/${program}.1.gz")
    add_custom_command(OUTPUT "${packed}" COMMAND gzip -9nc "${page}" > "${packed}" DEPENDS "${page}" VERBATIM)
    add_custom_target(manual_${program} ALL DEPENDS "${packed}")
    install(FILES "${packed}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endfunction()

# drevix_test(FOLDER [OPTIMIZED] [SERIAL] [LIBRARIES ...]): the test program of every *_test.cpp in the calling folder, with the tests
# of that folder's library. All of them are built: a test file cannot be forgotten. Where DREVIX_UNIT_TESTS is off only those
# with OPTIMIZED are built and run: they have tests that the sanitizers' own memory or time
# would disturb. Those with SERIAL run alone, and not under the sanitizers.
function(drevix_test folder)
    cmake_parse_arguments(arg "OPTIMIZED;SERIAL" "" "LIBRARIES" ${ARGN})
    set(labels)
    if(arg_SERIAL)
        set(labels LABELS serial RUN_SERIAL ON)
    endif()
    string(REPLACE "/" "_" name "${folder}")
    string(REPLACE "/" "." prefix "${folder}")
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    if(NOT sources)
        return()
    endif()
    add_executable(${name}_test ${sources})
    target_link_libraries(${name}_test PRIVATE ${name} ${arg_LIBRARIES} drevix_test_support GTest::gtest GTest::gmock
        GTest::gtest_main)
    target_compile_definitions(${name}_test PRIVATE DREVIX_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
    # What is tested is optimized under the sanitizers, to be fast; the tests themselves would only compile longer.
    target_compile_options(${name}_test PRIVATE $<$<CONFIG:Debug>:-O0>)
    if(NOT DREVIX_UNIT_TESTS AND NOT arg_OPTIMIZED)
        set_target_properties(${name}_test PROPERTIES EXCLUDE_FROM_ALL ON)
        return()
    endif()
    gtest_discover_tests(${name}_test TEST_PREFIX "${prefix}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 ${labels}
        ENVIRONMENT "ASAN_OPTIONS=allocator_may_return_null=1:detect_stack_use_after_return=1")
endfunction()
