# Installs the built project into a scratch prefix, then builds and runs a program outside
# the project against it, once through find_package and once through pkg-config.
# Arguments: -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DGENERATOR=... -DCC=...
#            -DLINK_FLAGS=... (how the project links its own programs; may be empty)
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")

run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/consumer" -B "${WORK_DIR}/cmake-consumer" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/cmake-consumer")
run("${WORK_DIR}/cmake-consumer/consumer")
message(STATUS "find_package consumer: ${last_output}")

file(GLOB_RECURSE pc_file "${prefix}/*/atrium_xml.pc")
get_filename_component(pc_dir "${pc_file}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
run(pkg-config --cflags --libs atrium_xml)
string(STRIP "${last_output}" pc_flags)
separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
separate_arguments(link_flags UNIX_COMMAND "${LINK_FLAGS}")
run("${CC}" "${SOURCE_DIR}/consumer/app.c" ${pc_flags} -llogin_service_default ${link_flags}
    -o "${WORK_DIR}/pc-consumer")
run("${WORK_DIR}/pc-consumer")
message(STATUS "pkg-config consumer: ${last_output}")
