# Programs that run on the build machine while the library is built (they
# write code and descriptions from the public member lists): compiled with
# the build machine's compiler, also when the library is cross-compiled,
# and without the library's own flags (no sanitizer runtime to load).
if(CMAKE_CROSSCOMPILING)
  find_program(PARCELVANE_HOST_CXX NAMES c++ g++ clang++ REQUIRED
    DOC "C++ compiler of the build machine, for make_idl and make_abi")
else()
  set(PARCELVANE_HOST_CXX ${CMAKE_CXX_COMPILER} CACHE FILEPATH
    "C++ compiler of the build machine, for make_idl and make_abi")
endif()

set(PARCELVANE_HOST_TOOLS_DIR ${PROJECT_BINARY_DIR}/host-tools)
file(MAKE_DIRECTORY ${PARCELVANE_HOST_TOOLS_DIR})

# The sources that every such program links: the identifiers, their text
# form, and the reading of the member lists.
set(_host_common
  ${PROJECT_SOURCE_DIR}/tools/member_lists/member_lists.cpp
  ${PROJECT_SOURCE_DIR}/src/com/identifiers.cpp
  ${PROJECT_SOURCE_DIR}/src/com/guid_text.cpp)
set(_host_headers
  ${PROJECT_SOURCE_DIR}/tools/member_lists/member_lists.h
  ${PROJECT_SOURCE_DIR}/src/com/guid_text.h
  ${PROJECT_SOURCE_DIR}/src/com/dispatch_ids.h
  ${PROJECT_SOURCE_DIR}/include/parcelvane/interfaces.h
  ${PROJECT_SOURCE_DIR}/include/parcelvane/identifiers.h
  ${PROJECT_SOURCE_DIR}/include/parcelvane/platform.h)

# parcelvane_host_tool(NAME SOURCE): builds ${PARCELVANE_HOST_TOOLS_DIR}/NAME.
function(parcelvane_host_tool name source)
  add_custom_command(OUTPUT ${PARCELVANE_HOST_TOOLS_DIR}/${name}
    COMMAND ${PARCELVANE_HOST_CXX} -std=c++17 -O1
            -I${PROJECT_SOURCE_DIR}/include -I${PROJECT_SOURCE_DIR}
            ${source} ${_host_common} -o ${PARCELVANE_HOST_TOOLS_DIR}/${name}
    DEPENDS ${source} ${_host_common} ${_host_headers}
    COMMENT "Building ${name} for the build machine")
endfunction()

# The producers of the library's classes, generated into the build tree:
# every target of this source tree has ${PROJECT_BINARY_DIR}/generated on
# its include path and is built after it (CMakeLists.txt).
set(PARCELVANE_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
file(MAKE_DIRECTORY ${PARCELVANE_GENERATED_DIR}/src/com)
parcelvane_host_tool(make_abi ${PROJECT_SOURCE_DIR}/tools/make_abi/make_abi.cpp)
add_custom_command(OUTPUT ${PARCELVANE_GENERATED_DIR}/src/com/produce.h
  COMMAND ${PARCELVANE_HOST_TOOLS_DIR}/make_abi ${PARCELVANE_GENERATED_DIR}/src/com/produce.h
  DEPENDS ${PARCELVANE_HOST_TOOLS_DIR}/make_abi
  COMMENT "Writing the producers of the interface operations")
add_custom_target(parcelvane_generated DEPENDS ${PARCELVANE_GENERATED_DIR}/src/com/produce.h)
