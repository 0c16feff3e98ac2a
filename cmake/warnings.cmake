# tarvo_warnings(target): the warnings that every target of this tree is built with.
function(tarvo_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
    -Woverloaded-virtual -Wconversion -Wsign-conversion -Wformat=2 -Wimplicit-fallthrough)
  if(TARVOLINK_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
