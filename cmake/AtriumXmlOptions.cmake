# Compile settings shared by every target of the project.

# Warnings for project code only (never for the dependencies' headers).
function(atrium_xml_project_target target)
  target_compile_features(${target} PRIVATE cxx_std_17 c_std_99)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow
                         $<$<BOOL:${ATRIUM_XML_WERROR}>:-Werror>)
  # Traces and the memory ledger name source files relative to the project root.
  target_compile_options(${target} PRIVATE
                         "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
endfunction()
