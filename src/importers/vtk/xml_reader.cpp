#include "importers/vtk/xml_reader.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>

namespace importers::vtk {

namespace {

// Text between tags is passed on up to here: what is longer are numbers.
constexpr std::size_t kKeptText = 4096;
constexpr std::size_t kLongestTag = std::size_t{1} << 20U;
constexpr int kDeepestTag = 64;

class Pass {
 public:
  Pass(const InputFile& file, XmlHandler& handler)
      : file_(file), handler_(handler), parser_(XML_ParserCreate(nullptr), XML_ParserFree) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* pass, const XML_Char* name, const XML_Char** attributes) {
          static_cast<Pass*>(pass)->guard([&](Pass& self) { self.start(name, attributes); });
        },
        [](void* pass, const XML_Char* name) { static_cast<Pass*>(pass)->guard([&](Pass& self) { self.end(name); }); });
    XML_SetStartDoctypeDeclHandler(
        parser_.get(), [](void* pass, const XML_Char*, const XML_Char*, const XML_Char*, int) {
          static_cast<Pass*>(pass)->guard(
              [](Pass& self) { self.fail("the file declares a document type, which files of VTK do not"); });
        });
  }

  void run() {
    std::vector<char> buffer(kBufferBytes);
    std::uint64_t at = 0;
    while (!isStopped_) {
      const std::size_t got = file_.read(at, std::as_writable_bytes(std::span(buffer)));
      if (got == 0) break;
      at += got;
      take({buffer.data(), got});
    }
    if (!isStopped_) feed({}, true);
  }

 private:
  // The parser is C: exceptions wait until it has returned.
  template <typename Work>
  void guard(const Work& work) {
    if (failure_) return;
    try {
      work(*this);
    } catch (...) {
      failure_ = std::current_exception();
      stop();
    }
  }

  void stop() {
    isStopped_ = true;
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  std::int64_t line() const {
    return static_cast<std::int64_t>(XML_GetCurrentLineNumber(parser_.get())) + leftOutLines_;
  }

  std::uint64_t byte() const {
    return static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser_.get())) + leftOutBytes_;
  }

  [[noreturn]] void fail(const std::string& reason) const { throw ImportError(file_.path(), line(), reason); }

  void start(const XML_Char* name, const XML_Char** attributes) {
    if (++depth_ > kDeepestTag) fail("tags are nested too deeply");
    XmlElement element;
    element.name = name;
    for (; *attributes != nullptr; attributes += 2) element.attributes.emplace_back(attributes[0], attributes[1]);
    element.line = line();
    element.contentBegin = byte() + static_cast<std::uint64_t>(XML_GetCurrentByteCount(parser_.get()));
    if (!handler_.start(element)) stop();
  }

  // Of an element without content the tag itself is where it ends; its content is empty all the same.
  void end(const XML_Char* name) {
    --depth_;
    handler_.end(name, byte());
  }

  // Passes tags on, and of long texts between them the beginning.
  void take(std::string_view text) {
    while (!text.empty() && !isStopped_) {
      if (isInTag_) {
        const std::size_t end = std::min(text.find('>'), text.size() - 1) + 1;
        isInTag_ = text[end - 1] != '>';
        run_ = isInTag_ ? run_ + end : 0;
        if (run_ > kLongestTag) fail("a tag has no end");
        feed(text.substr(0, end), false);
        text.remove_prefix(end);
        continue;
      }
      std::size_t end = std::min(text.find('<'), text.size());
      end = std::min(text.substr(0, end).find('>'), end);
      const std::size_t kept = std::min(end, kKeptText - std::min(kKeptText, run_));
      feed(text.substr(0, kept), false);
      leaveOut(text.substr(kept, end - kept));
      run_ += end;
      text.remove_prefix(end);
      if (!text.empty()) {
        isInTag_ = true;
        run_ = 0;
      }
    }
  }

  void leaveOut(std::string_view text) {
    leftOutBytes_ += text.size();
    leftOutLines_ += std::count(text.begin(), text.end(), '\n');
  }

  void feed(std::string_view text, bool isLast) {
    if (text.empty() && !isLast) return;
    const XML_Status status = XML_Parse(parser_.get(), text.data(), static_cast<int>(text.size()), isLast ? 1 : 0);
    if (failure_) std::rethrow_exception(failure_);
    if (status == XML_STATUS_OK || isStopped_) return;
    const XML_Error error = XML_GetErrorCode(parser_.get());
    if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    if (isLast) throw CutOff(file_.path(), line(), "the file ends before its last tag");
    fail(fmt::format("not well-formed XML: {}", XML_ErrorString(error)));
  }

  const InputFile& file_;
  XmlHandler& handler_;
  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
  std::exception_ptr failure_;
  bool isStopped_ = false;
  bool isInTag_ = false;
  std::size_t run_ = 0;  // how long the tag or text has been
  int depth_ = 0;
  std::uint64_t leftOutBytes_ = 0;
  std::int64_t leftOutLines_ = 0;
};

}  // namespace

const std::string* XmlElement::attribute(std::string_view name) const {
  const auto found =
      std::find_if(attributes.begin(), attributes.end(), [&](const auto& one) { return one.first == name; });
  return found == attributes.end() ? nullptr : &found->second;
}

void readXml(const InputFile& file, XmlHandler& handler) { Pass(file, handler).run(); }

}  // namespace importers::vtk
