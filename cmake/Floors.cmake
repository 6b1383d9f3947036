# A floor is one library target made of every source in its folders. What a floor may include is
# checked by tools/check_includes.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

add_library(nx_options INTERFACE)
# The archives are position-independent so that a host may put them into a shared library, where nobody replaces
# their functions.
target_compile_options(nx_options INTERFACE -fno-semantic-interposition)
# Fused multiply-add would round differently from machine to machine, and a run repeats to the byte.
target_compile_options(nx_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Report overlaps and sizes inside std::string's own operator+ that cannot be, the second one when linking.
    target_compile_options(nx_options INTERFACE -Wno-restrict)
    target_link_options(nx_options INTERFACE -Wno-stringop-overflow)
endif()
if(SCRIPTFRAMEWORK_WARNINGS_AS_ERRORS)
    target_compile_options(nx_options INTERFACE -Werror)
endif()
if(SCRIPTFRAMEWORK_LTO)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Machine code beside the intermediate one: an archive without the latter is installed.
        add_compile_options(-ffat-lto-objects)
        add_link_options(-flto=auto)
    endif()
endif()
if(SCRIPTFRAMEWORK_SANITIZE)
    add_compile_options(-fsanitize=${SCRIPTFRAMEWORK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The instrumentation hides from the compiler that std::regex sets what it moves.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
    add_link_options(-fsanitize=${SCRIPTFRAMEWORK_SANITIZE})
endif()
if(SCRIPTFRAMEWORK_FUZZ)
    # Only the programs of fuzz/ have what these call.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        add_compile_options(-fsanitize=fuzzer-no-link)
    else()
        add_compile_options(-fsanitize-coverage=trace-pc)
    endif()
endif()

# nx_floor(<target> <public libraries...>): the sources are those below the calling folder.
function(nx_floor target)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    add_library(${target} STATIC ${sources})
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:include/scriptFramework>)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_link_libraries(${target} PUBLIC ${ARGN} PRIVATE $<BUILD_INTERFACE:nx_options>)
    set_property(GLOBAL APPEND PROPERTY NX_FLOORS ${target})
endfunction()
