# Runs atrium-xml once and checks what it did (ctest driver, cmake -P).
#   TOOL                  the built tool
#   ARGS                  its arguments, separated by "|"
#   WORKDIR               where it runs (the source root, so answers print as relative paths)
#   INPUT                 file fed to its standard input (optional)
#   EXPECT_EXIT           exit status
#   EXPECT_STDOUT         file whose content stdout must equal (optional); with the
#                         environment variable ATRIUM_XML_UPDATE_EXPECTED set, the file is
#                         written instead (then review it by eye)
#   EXPECT_STDOUT_REGEX   regular expression stdout must match (optional)
#   EXPECT_ERROR          regular expression the one stderr line must match, after
#                         "atrium-xml: " (optional; stderr must then be exactly one line)
#   EXPECT_STDERR_REGEX   regular expression stderr must match (optional)
#   EXPECT_STDERR_EMPTY   stderr must be empty
#   CHECK_FILE            a file the run writes, whose content must equal ...
#   CHECK_FILE_EQUALS     ... this file (both optional)
cmake_minimum_required(VERSION 3.20)

string(REPLACE "|" ";" args "${ARGS}")
set(input_args)
if(INPUT)
  set(input_args INPUT_FILE "${INPUT}")
endif()
execute_process(COMMAND "${TOOL}" ${args}
                WORKING_DIRECTORY "${WORKDIR}"
                ${input_args}
                RESULT_VARIABLE status
                OUTPUT_VARIABLE out
                ERROR_VARIABLE err)

set(failures "")
if(NOT status STREQUAL EXPECT_EXIT)
  string(APPEND failures "exit status ${status}, expected ${EXPECT_EXIT}\n")
endif()
if(EXPECT_STDOUT)
  if(DEFINED ENV{ATRIUM_XML_UPDATE_EXPECTED})
    file(WRITE "${EXPECT_STDOUT}" "${out}")
  else()
    file(READ "${EXPECT_STDOUT}" expected)
    if(NOT out STREQUAL expected)
      get_filename_component(name "${EXPECT_STDOUT}" NAME)
      file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/${name}.actual" "${out}")
      string(APPEND failures "stdout differs from ${EXPECT_STDOUT} "
             "(got ${CMAKE_CURRENT_BINARY_DIR}/${name}.actual)\n")
    endif()
  endif()
endif()
if(EXPECT_STDOUT_REGEX AND NOT out MATCHES "${EXPECT_STDOUT_REGEX}")
  string(APPEND failures "stdout does not match ${EXPECT_STDOUT_REGEX}\n")
endif()
if(EXPECT_ERROR)
  if(NOT err MATCHES "^atrium-xml: [^\n]*\n$")
    string(APPEND failures "stderr is not one line starting \"atrium-xml: \"\n")
  elseif(NOT err MATCHES "${EXPECT_ERROR}")
    string(APPEND failures "stderr does not match ${EXPECT_ERROR}\n")
  endif()
endif()
if(EXPECT_STDERR_REGEX AND NOT err MATCHES "${EXPECT_STDERR_REGEX}")
  string(APPEND failures "stderr does not match ${EXPECT_STDERR_REGEX}\n")
endif()
if(CHECK_FILE)
  file(READ "${CHECK_FILE}" written)
  file(READ "${CHECK_FILE_EQUALS}" wanted)
  if(NOT written STREQUAL wanted)
    string(APPEND failures "${CHECK_FILE} differs from ${CHECK_FILE_EQUALS}\n")
  endif()
endif()
if(EXPECT_STDERR_EMPTY AND NOT err STREQUAL "")
  string(APPEND failures "stderr is not empty\n")
endif()

if(failures)
  message(FATAL_ERROR "atrium-xml ${args}\n${failures}--- stdout ---\n${out}--- stderr ---\n${err}")
endif()
