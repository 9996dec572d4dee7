# cmake -DFOLDER=DIR -DOUTPUT=FILE.cpp -P EmbedWebAssets.cmake: writes the files of DIR (the
# preview page of `serve`) into a C++ source as byte arrays with their request paths and
# Content-Types, so that the program serves them with nothing beside it. index.html is also "/".
file(GLOB names RELATIVE ${FOLDER} ${FOLDER}/*)
list(SORT names)
set(arrays "")
set(table "")
set(count 0)
foreach(name ${names})
    file(READ ${FOLDER}/${name} hex HEX)
    string(LENGTH "${hex}" digits)
    math(EXPR size "${digits} / 2")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
    string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" bytes "${bytes}")
    if(name MATCHES "\\.html$")
        set(type "text/html; charset=utf-8")
    elseif(name MATCHES "\\.css$")
        set(type "text/css; charset=utf-8")
    elseif(name MATCHES "\\.js$")
        set(type "text/javascript; charset=utf-8")
    elseif(name MATCHES "\\.svg$")
        set(type "image/svg+xml")
    elseif(name MATCHES "\\.png$")
        set(type "image/png")
    else()
        message(FATAL_ERROR "no Content-Type known for app/serve/web/${name}")
    endif()
    string(APPEND arrays "const unsigned char asset${count}[] = {\n${bytes}0};\n")
    set(view "{reinterpret_cast<const char*>(asset${count}), ${size}}")
    string(APPEND table "    {\"/${name}\", \"${type}\", ${view}},\n")
    if(name STREQUAL "index.html")
        string(APPEND table "    {\"/\", \"${type}\", ${view}},\n")
    endif()
    math(EXPR count "${count} + 1")
endforeach()

file(WRITE ${OUTPUT}.new "// Made by cmake/EmbedWebAssets.cmake from app/serve/web/; not to be edited.
#include <algorithm>
#include <iterator>

#include \"app/serve/web_asset.h\"

namespace velto::app {

namespace {

${arrays}
const WebAsset kWebAssets[] = {
${table}};

}  // namespace

const WebAsset* findWebAsset(std::string_view path) {
    const auto found = std::find_if(std::begin(kWebAssets), std::end(kWebAssets),
                                    [&](const WebAsset& asset) { return asset.path == path; });
    return found == std::end(kWebAssets) ? nullptr : &*found;
}

}  // namespace velto::app
")
# Rewritten only when it changed, so that an unchanged page does not relink the program.
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.new)
