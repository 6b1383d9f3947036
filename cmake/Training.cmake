# A compiler that knows which way each branch mostly goes, and which calls are hot, lays the program out by that. So it is built twice: the preset
# `counting` makes a program that counts what it executes, and the target `training` runs that over examples and recipes; `trained` and `deb` compile with
# the counts. Sources outside of the program, such as benchmarks and tests, have none and are compiled as usual.
set(SCRIPTFRAMEWORK_TRAINING "" CACHE STRING "Training: `count` builds the program that is to be trained, `use` compiles with its counts")
set(SCRIPTFRAMEWORK_TRAINING_DIR "${PROJECT_SOURCE_DIR}/build/counting/counts" CACHE PATH "Where training keeps its counts")
set_property(CACHE SCRIPTFRAMEWORK_TRAINING PROPERTY STRINGS "" "count" "use")

if(SCRIPTFRAMEWORK_TRAINING)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        message(FATAL_ERROR "SCRIPTFRAMEWORK_TRAINING is for g++, and this is ${CMAKE_CXX_COMPILER_ID}: set it to nothing")
    endif()
    # Counts are found by the path of the object file below the build folder, so the two builds lie in two folders.
    add_compile_options(-fprofile-prefix-path=${CMAKE_BINARY_DIR})
endif()
if(SCRIPTFRAMEWORK_TRAINING STREQUAL "count")
    # Threads count the same things.
    add_compile_options(-fprofile-generate=${SCRIPTFRAMEWORK_TRAINING_DIR} -fprofile-update=atomic)
    add_link_options(-fprofile-generate)
elseif(SCRIPTFRAMEWORK_TRAINING STREQUAL "use")
    if(NOT EXISTS ${SCRIPTFRAMEWORK_TRAINING_DIR}/done)
        message(FATAL_ERROR "There are no counts in ${SCRIPTFRAMEWORK_TRAINING_DIR}: run `make training`")
    endif()
    # Part of each command, so that all is compiled anew when tools/train has changed. Where only sources or scripts have changed, counts of the other sources still hold.
    file(SHA256 ${PROJECT_SOURCE_DIR}/tools/train training)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/train)
    add_compile_definitions(NX_TRAINING=${training})
    # What training does not reach is compiled as usual too, and not as if it were never needed.
    add_compile_options(-fprofile-use=${SCRIPTFRAMEWORK_TRAINING_DIR} -fprofile-partial-training -Wno-missing-profile)
elseif(SCRIPTFRAMEWORK_TRAINING)
    message(FATAL_ERROR "SCRIPTFRAMEWORK_TRAINING is `count` or `use`, not `${SCRIPTFRAMEWORK_TRAINING}`")
endif()

# To be called where the program is.
function(nx_train program)
    if(NOT SCRIPTFRAMEWORK_TRAINING STREQUAL "count")
        return()
    endif()
    set(tools ${PROJECT_SOURCE_DIR}/tools)
    file(GLOB examples CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.lua ${PROJECT_SOURCE_DIR}/examples/data/*
        ${PROJECT_SOURCE_DIR}/docs/cookbook/*.lua)
    add_custom_command(OUTPUT ${SCRIPTFRAMEWORK_TRAINING_DIR}/done
        COMMAND ${Python3_EXECUTABLE} ${tools}/train $<TARGET_FILE:${program}> ${SCRIPTFRAMEWORK_TRAINING_DIR}
        DEPENDS ${program} ${tools}/train ${tools}/roads.py ${examples}
        COMMENT "Training ${program}"
        VERBATIM)
    add_custom_target(training DEPENDS ${SCRIPTFRAMEWORK_TRAINING_DIR}/done)
endfunction()
