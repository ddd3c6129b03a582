// Passes over the tags of an XML file without holding its text: arrays written between tags are neither copied nor
// looked at.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "importers/vtk/input_file.h"

namespace importers::vtk {

struct XmlElement {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::int64_t line = 0;
  std::uint64_t contentBegin = 0;  // the byte of the file after the tag

  // Null where there is none.
  const std::string* attribute(std::string_view name) const;
};

class XmlHandler {
 public:
  XmlHandler() = default;
  virtual ~XmlHandler() = default;
  XmlHandler(const XmlHandler&) = delete;
  XmlHandler& operator=(const XmlHandler&) = delete;

  // False where nothing behind this tag shall be read: what follows may be no text.
  virtual bool start(const XmlElement& element) = 0;
  // `contentEnd` is the byte where the tag begins that ends the element.
  virtual void end(const std::string& name, std::uint64_t contentEnd) = 0;
};

// Calls the handler for every element in the order of the file. Throws ImportError with the line for what is not
// well-formed, declares a document type (entities), is nested deeper than 64 or has a tag of more than 1 MiB; CutOff
// for a file that ends before its first element does.
void readXml(const InputFile& file, XmlHandler& handler);

}  // namespace importers::vtk
