# The Windows library's type library: make_idl (built for the machine that
# runs the build, cmake/HostTools.cmake) writes the interface definition from the public member
# and class lists, widl compiles it, and a resource script embeds it in the
# DLL as TYPELIB 1 beside a version resource.
find_program(PARCELVANE_WIDL NAMES x86_64-w64-mingw32-widl widl REQUIRED
  DOC "The IDL compiler (Debian: mingw-w64-tools)")
set(PARCELVANE_IDL_INCLUDE "/usr/include/wine/wine/windows" CACHE PATH
  "Folder with oaidl.idl (Debian: libwine-dev)")
set(PARCELVANE_STDOLE_DIR "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows" CACHE PATH
  "Folder with stdole2.tlb (Debian: wine64)")

set(_tl_dir ${CMAKE_CURRENT_BINARY_DIR}/typelib)
set(_make_idl ${PARCELVANE_HOST_TOOLS_DIR}/make_idl)
file(MAKE_DIRECTORY ${_tl_dir})
parcelvane_host_tool(make_idl ${PROJECT_SOURCE_DIR}/tools/make_idl/make_idl.cpp)

add_custom_command(OUTPUT ${_tl_dir}/parcelvane.idl
  COMMAND ${_make_idl} ${_tl_dir}/parcelvane.idl
  DEPENDS ${_make_idl}
  COMMENT "Writing the interface definition")

add_custom_command(OUTPUT ${_tl_dir}/parcelvane.tlb
  COMMAND ${PARCELVANE_WIDL} -m64 -t -o ${_tl_dir}/parcelvane.tlb
          -I ${PARCELVANE_IDL_INCLUDE} -L ${PARCELVANE_STDOLE_DIR} ${_tl_dir}/parcelvane.idl
  DEPENDS ${_tl_dir}/parcelvane.idl
  COMMENT "Compiling the type library")

configure_file(${PROJECT_SOURCE_DIR}/src/server/parcelvane.rc.in ${_tl_dir}/parcelvane.rc @ONLY)
set_source_files_properties(${_tl_dir}/parcelvane.rc PROPERTIES OBJECT_DEPENDS ${_tl_dir}/parcelvane.tlb)
target_sources(parcelvane PRIVATE ${_tl_dir}/parcelvane.rc)
