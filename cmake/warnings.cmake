# tarvo_warnings(target): the warnings that every target of this tree is built with.
#
# A constructor's parameter may bear its member's name: gcc's plain -Wshadow refuses that, clang's
# does not and knows no "=local".
function(tarvo_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow> -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
    -Woverloaded-virtual -Wconversion -Wsign-conversion -Wformat=2 -Wimplicit-fallthrough)
  if(TARVOLINK_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
