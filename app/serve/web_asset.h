#pragma once

#include <string_view>

namespace velto::app {

// A file of the preview page, built into the program (app/serve/web/), so that the program
// needs nothing beside it.
struct WebAsset {
    std::string_view path;  // as requested: "/", "/preview.js"...
    std::string_view type;  // its Content-Type
    std::string_view bytes;
};

// The file at exactly `path`; nullptr for any other path. Nothing is looked up on disk, so no
// path reaches outside the page's own files.
const WebAsset* findWebAsset(std::string_view path);

}  // namespace velto::app
