# Project-wide warning set; applied per target so that third-party code is not affected.
function(velmora_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /permissive-)
    if(VELMORA_WARNINGS_AS_ERRORS)
      target_compile_options(${target} PRIVATE /WX)
    endif()
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
      -Wcast-align -Woverloaded-virtual -Wimplicit-fallthrough)
    # GCC 12 warns falsely about overlapping copies inside std::string once the optimiser inlines
    # it (-O3, so every Release build): "x" + std::string(...) or s = "0" is enough. The warning
    # says nothing about our code there, so it is off for that compiler.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
       AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(VELMORA_WARNINGS_AS_ERRORS)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
endfunction()
