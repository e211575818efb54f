# Installs the build tree into a fresh prefix, then configures, builds and runs the consumer
# project against that prefix only. Run by CTest as
#   cmake -DBUILD_DIR=... -DCONSUMER_DIR=... -DWORK_DIR=... -DCXX_COMPILER=... -DCXX_FLAGS=...
#         [-DTOOL=bin/eod] -P install_test.cmake
# With TOOL (the command's path under the prefix), the installed command must start and
# find the installed library on its own.
foreach(var BUILD_DIR CONSUMER_DIR WORK_DIR CXX_COMPILER)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE rc
                  OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
run("${CMAKE_COMMAND}" -S "${CONSUMER_DIR}" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix" "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF"
    "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${CXX_FLAGS}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
if(DEFINED TOOL)
  execute_process(COMMAND "${WORK_DIR}/prefix/${TOOL}" --version RESULT_VARIABLE rc
                  OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0 OR NOT out MATCHES "^[0-9]+\\.[0-9]+\\.[0-9]+\n$")
    message(FATAL_ERROR "installed ${TOOL} --version failed (${rc}): ${out}${err}")
  endif()
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
