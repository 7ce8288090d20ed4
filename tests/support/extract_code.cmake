# Writes the first code block of a language in a guide to a file, so that what readers copy is what is built:
# cmake -DGUIDE=docs/driver-guide.md -DLANGUAGE=c -DOUTPUT=textfile.c -P extract_code.cmake
file(READ ${GUIDE} text)
string(FIND "${text}" "```${LANGUAGE}\n" start)
if(start EQUAL -1)
  message(FATAL_ERROR "${GUIDE} has no code block of ${LANGUAGE}")
endif()
string(SUBSTRING "${text}" ${start} -1 text)
string(FIND "${text}" "\n```\n" length)
string(SUBSTRING "${text}" 0 ${length} text)
string(REPLACE "```${LANGUAGE}\n" "" text "${text}")
file(WRITE ${OUTPUT} "${text}\n")
