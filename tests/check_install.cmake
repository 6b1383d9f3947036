# cmake -P: installs BUILD_DIR below a scratch prefix, builds examples/embedding against that copy, runs both
# programs, and compares their output.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed: ${command}\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${SCRATCH})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${SCRATCH}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/embedding -B ${SCRATCH}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${SCRATCH}/prefix -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
    -DCMAKE_DISABLE_FIND_PACKAGE_SQLite3=ON -DCMAKE_DISABLE_FIND_PACKAGE_ZLIB=ON  # the library needs neither
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" -DCMAKE_BUILD_TYPE=Debug)
run(${CMAKE_COMMAND} --build ${SCRATCH}/build)

foreach(file man/man1/algoserver.1 man/man1/algoserver-run.1 bash-completion/completions/algoserver
        zsh/site-functions/_algoserver fish/vendor_completions.d/algoserver.fish)
    file(SIZE ${SCRATCH}/prefix/share/${file} size)  # fails where there is none
    if(size LESS 100)
        message(FATAL_ERROR "${file} is installed without content")
    endif()
endforeach()
# What an installed program says to editors lies installed, too.
run(${SCRATCH}/prefix/bin/algoserver types -o ${SCRATCH}/types)
run(${CMAKE_COMMAND} -E compare_files ${SCRATCH}/types/algoserver.lua
    ${SCRATCH}/prefix/share/scriptFramework/types/algoserver.lua)

function(expect program expected)
    execute_process(COMMAND ${SCRATCH}/build/${program} RESULT_VARIABLE result OUTPUT_VARIABLE output)
    if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
        message(FATAL_ERROR "the example ${program} gave ${result} and\n${output}")
    endif()
endfunction()

expect(embedding "script: DEMO is bid 100 for 5
script: DEMO is bid 100.01 for 5
script: tick: the product's bid is 100.01
script: DEMO is bid 100.02 for 5
script: tick: the product's bid is 100.02
script: DEMO is bid 100.04 for 5
script: bye
")
expect(orders "script: not sent: the order has no volume
script: order 1 works: BUY 3 at 100.25
script: filled 2 at 100.2, 1 left
script: over with 2 of 3, true
")

# Intermediate code of link-time optimisation would be optimised anew at each link of a host.
file(GLOB archives ${SCRATCH}/prefix/lib*/*.a ${SCRATCH}/prefix/lib*/*/*.a)
foreach(archive IN LISTS archives)
    file(STRINGS ${archive} sections REGEX "^\\.gnu\\.lto_" LIMIT_COUNT 1)
    if(sections)
        message(FATAL_ERROR "${archive} holds intermediate code")
    endif()
endforeach()
if(NOT archives)
    message(FATAL_ERROR "no archive is installed")
endif()

