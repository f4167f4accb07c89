# One set of compiler rules for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion
                    -Wno-sign-conversion -Werror)
# One picture in a batch can be larger than 4 GiB; every file interface is the 64-bit one.
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(OSTRA_SANITIZE)
  add_compile_options(-fsanitize=${OSTRA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${OSTRA_SANITIZE})
  # GCC 12 loses track of optionals behind the sanitizers' checks and warns of what is set.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()

# ostra_room(NAME SOURCES... ) makes the static library of one room.
function(ostra_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} STATIC ${ROOM_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ROOM_LINKS} PRIVATE ${ROOM_PRIVATE_LINKS})
endfunction()

# ostra_serves_modules(PROGRAM): modules that the program loads use its own platform objects and main queue, not copies
# of theirs. So the rooms that they use are in the program whole, and their names, no others, can be found by a module.
function(ostra_serves_modules program)
  set_target_properties(${program} PROPERTIES LINK_LIBRARY_OVERRIDE
    "WHOLE_ARCHIVE,ostra_appkit,ostra_dispatch,ostra_foundation,ostra_graphics,ostra_imageio,ostra_log,ostra_types")
  foreach(kind _ZN _ZNK _ZNO _ZTIN _ZTSN _ZTVN)
    target_link_options(${program} PRIVATE "LINKER:--export-dynamic-symbol=${kind}5ostra*")
  endforeach()
  get_property(modules GLOBAL PROPERTY OSTRA_MODULES)
  add_dependencies(${program} ${modules})
endfunction()
