# Collects the library's sources and exports from the folders and builds
# the object library, the static library and the shared library
# (libprism32.so, or PRISM32.DLL with its import library).

set_property(GLOBAL PROPERTY PRISM_SOURCES "")
set_property(GLOBAL PROPERTY PRISM_EXPORTS "")

# prism_sources(file...): library sources, relative to the calling folder.
function(prism_sources)
  foreach(f ${ARGN})
    set_property(GLOBAL APPEND PROPERTY PRISM_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/${f})
  endforeach()
endfunction()

# prism_exports(Name...): exports defined by the calling folder.  Ordinals
# and argument sizes come from the public header.
function(prism_exports)
  set_property(GLOBAL APPEND PROPERTY PRISM_EXPORTS ${ARGN})
endfunction()

# Writes the module-definition file for the exports that exist.  On 32-bit
# Windows the names carry their stdcall decoration (Name@bytes); the linker
# removes it from the export table and the import library keeps it.
function(prism_write_def out decorate)
  get_property(names GLOBAL PROPERTY PRISM_EXPORTS)
  file(STRINGS ${PROJECT_SOURCE_DIR}/include/prism32.h protos REGEX "^/\\* [0-9]+ \\*/")
  set(text "LIBRARY PRISM32.DLL\nEXPORTS\n")
  set(table "// Generated: the exports this build defines, with their ordinals.\n")
  set(found "")
  foreach(line ${protos})
    if(NOT line MATCHES "^/\\* ([0-9]+) \\*/ .*(WINAPI|CALLBACK) ([A-Za-z_0-9]+)\\((.*)\\);")
      message(FATAL_ERROR "prism32.h: cannot read export line: ${line}")
    endif()
    set(ord ${CMAKE_MATCH_1})
    set(name ${CMAKE_MATCH_3})
    set(args "${CMAKE_MATCH_4}")
    list(FIND names ${name} idx)
    if(idx LESS 0)
      continue()
    endif()
    list(APPEND found ${name})
    string(APPEND table "PRISM_EXPORT_ENTRY(${name}, ${ord})\n")
    if(decorate)
      if(args STREQUAL "void")
        set(bytes 0)
      else()
        string(REGEX REPLACE "[^,]" "" commas "${args}")
        string(LENGTH "${commas}" n)
        math(EXPR bytes "(${n} + 1) * 4")
      endif()
      string(APPEND text "  ${name}@${bytes} @${ord}\n")
    else()
      string(APPEND text "  ${name} @${ord}\n")
    endif()
  endforeach()
  foreach(name ${names})
    list(FIND found ${name} idx)
    if(idx LESS 0)
      message(FATAL_ERROR "export ${name} has no declaration in prism32.h")
    endif()
  endforeach()
  file(WRITE ${out}.tmp "${text}")
  configure_file(${out}.tmp ${out} COPYONLY)
  file(WRITE ${CMAKE_BINARY_DIR}/prism_exports.inc.tmp "${table}")
  configure_file(${CMAKE_BINARY_DIR}/prism_exports.inc.tmp ${CMAKE_BINARY_DIR}/prism_exports.inc COPYONLY)
endfunction()

function(prism_finish_library)
  get_property(sources GLOBAL PROPERTY PRISM_SOURCES)
  add_library(prism32_obj OBJECT ${sources})
  target_include_directories(prism32_obj PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})

  add_library(prism32_static STATIC $<TARGET_OBJECTS:prism32_obj>)
  target_include_directories(prism32_static PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
  set_target_properties(prism32_static PROPERTIES OUTPUT_NAME prism32)

  if(WIN32)
    set(def ${CMAKE_BINARY_DIR}/prism32.def)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
      prism_write_def(${def} TRUE)
    else()
      prism_write_def(${def} FALSE)
    endif()
    add_library(prism32 SHARED $<TARGET_OBJECTS:prism32_obj> ${PROJECT_SOURCE_DIR}/platform/win32/dllmain.cpp ${def})
    target_include_directories(prism32 PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
    # Plain PRISM32.DLL, no "lib" prefix; the static library keeps the
    # import library's name free.
    set_target_properties(prism32 PROPERTIES PREFIX "" OUTPUT_NAME PRISM32 SUFFIX ".DLL"
                          ARCHIVE_OUTPUT_NAME prism32dll)
    target_link_libraries(prism32 PRIVATE user32 gdi32 kernel32)
    target_link_libraries(prism32_static INTERFACE user32 gdi32 kernel32)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
      target_link_options(prism32 PRIVATE -Wl,--kill-at)
      # The linker's import library would lose the decoration callers use;
      # build it from the same definition file instead.
      find_program(PRISM_DLLTOOL NAMES ${CMAKE_C_COMPILER_TARGET}-dlltool i686-w64-mingw32-dlltool REQUIRED)
      add_custom_command(TARGET prism32 POST_BUILD
        COMMAND ${PRISM_DLLTOOL} -d ${def} -l ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/libprism32dll.dll.a -D PRISM32.DLL -k
        COMMENT "Import library for PRISM32.DLL")
    endif()
  else()
    prism_write_def(${CMAKE_BINARY_DIR}/prism32.def FALSE)
    add_library(prism32 SHARED $<TARGET_OBJECTS:prism32_obj>)
    target_include_directories(prism32 PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
    target_link_libraries(prism32 PRIVATE ${CMAKE_DL_LIBS})
    target_link_libraries(prism32_static INTERFACE ${CMAKE_DL_LIBS})
    set_target_properties(prism32 PROPERTIES VERSION 5.13 SOVERSION 5)
  endif()
endfunction()
