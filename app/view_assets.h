// The files of the result page (viewer/*.html, *.js, *.css and viewer/vendor/*),
// carried inside the host: the build turns them into byte arrays
// (cmake/embed_files.cmake), so that `norvik view` needs nothing beside the binary.
#pragma once

#include <cstddef>
#include <span>

namespace host {

struct ViewAsset {
  const char* name;  // the file name under viewer/ or viewer/vendor/: "page.html"
  const unsigned char* data;
  std::size_t size;  // bytes; the data hold no terminating NUL
};

// Every asset, in the order the build listed them.
std::span<const ViewAsset> view_assets();

}  // namespace host
