# Compile settings shared by every target of the project.

# Warnings for project code only (never for the dependencies' headers).
function(atrium_xml_project_target target)
  target_compile_features(${target} PRIVATE cxx_std_17 c_std_99)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow
                         $<$<BOOL:${ATRIUM_XML_WERROR}>:-Werror>)
  # File offsets of 64 bits on 32-bit targets too: without them a directory listing or a stat
  # of a large file fails there with EOVERFLOW (harmless where offsets are 64 bits already).
  target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
  # Traces and the memory ledger name source files relative to the project root.
  target_compile_options(${target} PRIVATE
                         "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
  # Calls into shared libraries (pugixml's accessors, the C library's string routines) go
  # through the GOT directly instead of through a PLT stub: one jump less per call, and
  # reading an answer makes several such calls per element (1-2% of a login).
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT APPLE)
    target_compile_options(${target} PRIVATE -fno-plt)
  endif()
endfunction()
