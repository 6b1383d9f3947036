# cmake -P: installs BUILD_DIR below a scratch prefix, builds examples/embedding against that copy, runs it, and
# compares its output.
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
execute_process(COMMAND ${SCRATCH}/build/embedding RESULT_VARIABLE result OUTPUT_VARIABLE output)
set(expected "script: DEMO is bid 100 for 5
script: DEMO is bid 100.01 for 5
script: tick: the product's bid is 100.01
script: DEMO is bid 100.02 for 5
script: tick: the product's bid is 100.02
script: DEMO is bid 100.04 for 5
script: bye
")
if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
    message(FATAL_ERROR "the embedding example gave ${result} and\n${output}")
endif()
