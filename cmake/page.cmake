# Puts a page, its style, its script and the library that draws its charts into one text, and that into a C++ source:
#   cmake -D FOLDER=... -D CHARTS=... -D LICENCE=... -D OUTPUT=... -P page.cmake
cmake_minimum_required(VERSION 3.25)

file(READ ${FOLDER}/page.html page)
file(READ ${FOLDER}/page.css style)
file(READ ${FOLDER}/page.js script)
file(READ ${CHARTS} charts)
file(READ ${LICENCE} licence)

string(REGEX REPLACE "//# sourceMappingURL=[^\n]*" "" charts "${charts}")  # there is no such file beside the page
string(REPLACE "&" "&amp;" licence "${licence}")
string(REPLACE "<" "&lt;" licence "${licence}")

string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")
string(REPLACE "@LICENCE@" "${licence}" page "${page}")
string(REPLACE "@CHARTS@" "${charts}" page "${page}")

file(WRITE ${OUTPUT} "#include \"report/page_template.h\"\n\nconst std::string_view kestvox::PageTemplate =\n"
  "    R\"page(${page})page\";\n")
