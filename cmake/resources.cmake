# One resource script, compiled once by one compiler, for both systems.

# compile_resources(SCRIPT DEPENDS HEADER...): sets RESOURCE_FILE to the compiled .res file and, on
# Windows, RESOURCE_OBJECT to the object file to link.
function(compile_resources script)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" DEPENDS)
  get_filename_component(name ${script} NAME_WE)
  get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR}/${script} DIRECTORY)
  set(input ${CMAKE_CURRENT_SOURCE_DIR}/${script})
  list(TRANSFORM arg_DEPENDS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(APPEND arg_DEPENDS ${KESTVOX_GENERATED}/kestvox_version.h)
  set(text ${CMAKE_CURRENT_BINARY_DIR}/${name}.rc)
  set(res ${CMAKE_CURRENT_BINARY_DIR}/${name}.res)

  # The compiler takes a name that begins with a slash for an option when one of its options begins
  # like it (/code is the option /c with the value ode): it is given names in its own folder.
  find_program(LLVM_RC NAMES llvm-rc llvm-rc-14 REQUIRED)
  add_custom_command(
    OUTPUT ${res}
    BYPRODUCTS ${text}
    COMMAND ${CMAKE_CXX_COMPILER} -E -P -undef -x c -DRC_INVOKED
            -I${CMAKE_CURRENT_SOURCE_DIR} -I${KESTVOX_GENERATED} ${input} -o ${text}
    COMMAND ${LLVM_RC} -no-preprocess -I ${folder} -FO ${name}.res ${name}.rc
    DEPENDS ${input} ${arg_DEPENDS}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    COMMENT "Compiling resources ${script}"
    VERBATIM)
  set(RESOURCE_FILE ${res} PARENT_SCOPE)

  if(WIN32)
    set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}_res.o)
    add_custom_command(
      OUTPUT ${object}
      COMMAND ${CMAKE_RC_COMPILER} -J res -O coff ${res} ${object}
      DEPENDS ${res}
      COMMENT "Making an object file of resources ${script}"
      VERBATIM)
    set(RESOURCE_OBJECT ${object} PARENT_SCOPE)
  endif()
endfunction()

# attach_resources(TARGET): on Windows the linker takes them; elsewhere the .res file becomes the
# section .rsrc of the finished library.
function(attach_resources target)
  if(WIN32)
    target_sources(${target} PRIVATE ${RESOURCE_OBJECT} ${RESOURCE_FILE})
    return()
  endif()
  target_sources(${target} PRIVATE ${RESOURCE_FILE})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${RESOURCE_FILE})
  add_custom_command(
    TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --add-section .rsrc=${RESOURCE_FILE}
            --set-section-flags .rsrc=readonly,noload $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()
