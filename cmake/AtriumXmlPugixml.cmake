# How the XML document library gets pugixml: compiled in from Debian's source package
# (ATRIUM_XML_PUGIXML=source, the default once scripts/fetch-sources.sh has fetched it) or
# Debian's shared library (=system).
#
# Compiled in, pugixml is used in its header-only mode: every file that includes
# pugixml.hpp compiles the parts it uses, so pugixml's accessors inline into the XML
# library's walk and lookups instead of being a call each. XPath is left out (nothing uses
# it). The target atrium_pugixml carries the include path and definitions for the
# project's own targets; it is never exported: an installed ktl_xml holds its pugixml.

set(ATRIUM_XML_SOURCES_DEFAULT "$ENV{ATRIUM_XML_SOURCES}")
if(NOT ATRIUM_XML_SOURCES_DEFAULT)
  if(DEFINED ENV{XDG_CACHE_HOME} AND NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
    set(ATRIUM_XML_SOURCES_DEFAULT "$ENV{XDG_CACHE_HOME}/atrium-xml/sources")
  else()
    set(ATRIUM_XML_SOURCES_DEFAULT "$ENV{HOME}/.cache/atrium-xml/sources")
  endif()
endif()
set(ATRIUM_XML_PUGIXML_SOURCE_DIR "${ATRIUM_XML_SOURCES_DEFAULT}/pugixml" CACHE PATH
    "pugixml's source (Debian's source package, unpacked by scripts/fetch-sources.sh)")
if(EXISTS "${ATRIUM_XML_PUGIXML_SOURCE_DIR}/src/pugixml.cpp")
  set(atrium_xml_pugixml_default source)
else()
  set(atrium_xml_pugixml_default system)
endif()
set(ATRIUM_XML_PUGIXML ${atrium_xml_pugixml_default} CACHE STRING
    "pugixml: 'source' (compiled in from its source package) or 'system' (the shared library)")
set_property(CACHE ATRIUM_XML_PUGIXML PROPERTY STRINGS source system)

add_library(atrium_pugixml INTERFACE)
if(ATRIUM_XML_PUGIXML STREQUAL "source")
  if(NOT EXISTS "${ATRIUM_XML_PUGIXML_SOURCE_DIR}/src/pugixml.cpp")
    message(FATAL_ERROR "ATRIUM_XML_PUGIXML=source: no pugixml source in ${ATRIUM_XML_PUGIXML_SOURCE_DIR} "
                        "(run scripts/install-deps.sh, or set ATRIUM_XML_PUGIXML_SOURCE_DIR)")
  endif()
  target_include_directories(atrium_pugixml SYSTEM INTERFACE "${ATRIUM_XML_PUGIXML_SOURCE_DIR}/src")
  target_compile_definitions(atrium_pugixml INTERFACE PUGIXML_HEADER_ONLY PUGIXML_NO_XPATH)
  message(STATUS "pugixml: compiled in from ${ATRIUM_XML_PUGIXML_SOURCE_DIR}")
elseif(ATRIUM_XML_PUGIXML STREQUAL "system")
  find_package(pugixml CONFIG REQUIRED)
  target_link_libraries(atrium_pugixml INTERFACE pugixml::pugixml)
  message(STATUS "pugixml: the system's shared library")
else()
  message(FATAL_ERROR "ATRIUM_XML_PUGIXML must be 'source' or 'system', not '${ATRIUM_XML_PUGIXML}'")
endif()
