# Compiles a file holding only #include <orv/orv.h> as C99 and as C++20,
# warnings as errors, and checks from the compiler's list of dependencies
# that it brought in every public header of include/orv.
#   cmake -DCC=... -DCXX=... -DINCLUDE=<include dir> -DGEN=<generated include dir>
#         -DWORK=<scratch dir> -P check_umbrella_header.cmake
file(GLOB headers RELATIVE ${INCLUDE}/orv ${INCLUDE}/orv/*.h)
file(MAKE_DIRECTORY ${WORK})
foreach(lang c cpp)
  if(lang STREQUAL "c")
    set(compiler ${CC})
    set(std -std=c99)
  else()
    set(compiler ${CXX})
    set(std -std=c++20)
  endif()
  set(src ${WORK}/umbrella.${lang})
  file(WRITE ${src} "#include <orv/orv.h>\nint main(void) { return 0; }\n")
  execute_process(
    COMMAND ${compiler} ${std} -Wall -Wextra -pedantic -Werror -I${INCLUDE} -I${GEN}
            -c ${src} -o ${WORK}/umbrella_${lang}.o -MD -MF ${WORK}/umbrella_${lang}.d
    RESULT_VARIABLE rc ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "<orv/orv.h> does not compile as ${lang}:\n${err}")
  endif()
  file(READ ${WORK}/umbrella_${lang}.d deps)
  foreach(h ${headers})
    if(NOT deps MATCHES "orv/${h}")
      message(SEND_ERROR "<orv/orv.h> does not bring in <orv/${h}> (${lang})")
    endif()
  endforeach()
endforeach()
