#include "odbstore/names.h"

namespace odbstore {

std::string linkFromName(std::string_view name) {
  if (name == ".") return "%2E";
  std::string link;
  link.reserve(name.size());
  for (const char c : name) {
    if (c == '%') {
      link += "%25";
    } else if (c == '/') {
      link += "%2F";
    } else {
      link += c;
    }
  }
  return link;
}

std::string nameFromLink(std::string_view link) {
  std::string name;
  name.reserve(link.size());
  for (std::size_t i = 0; i < link.size(); ++i) {
    const std::string_view escape = link.substr(i, 3);
    if (escape == "%25") {
      name += '%';
    } else if (escape == "%2F") {
      name += '/';
    } else if (escape == "%2E") {
      name += '.';
    } else {
      name += link[i];
      continue;
    }
    i += 2;
  }
  return name;
}

}  // namespace odbstore
