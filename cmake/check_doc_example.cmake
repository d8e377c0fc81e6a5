# Fails unless the page holds the example program verbatim.
#   cmake -DEXAMPLE=<file.c> -DPAGE=<page.md> -P check_doc_example.cmake
file(READ ${EXAMPLE} program)
file(READ ${PAGE} page)
string(FIND "${page}" "${program}" at)
if(at LESS 0)
  message(FATAL_ERROR "${PAGE} does not hold ${EXAMPLE} as it stands")
endif()
