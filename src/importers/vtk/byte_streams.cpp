#include "importers/vtk/byte_streams.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace importers::vtk {

namespace {

constexpr unsigned char kBlank = 64;
constexpr unsigned char kPadding = 65;
constexpr unsigned char kWrong = 66;

// The six bits of each character.
constexpr std::array<unsigned char, 256> kSextets = [] {
  std::array<unsigned char, 256> sextets{};
  sextets.fill(kWrong);
  unsigned char value = 0;
  for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")) {
    sextets[static_cast<unsigned char>(c)] = value++;
  }
  for (const char c : std::string_view(" \t\r\n")) sextets[static_cast<unsigned char>(c)] = kBlank;
  sextets['='] = kPadding;
  return sextets;
}();

}  // namespace

std::size_t FileBytes::read(std::span<std::byte> out) {
  const std::size_t wanted = std::min<std::uint64_t>(out.size(), end_ - at_);
  const std::size_t got = file_.read(at_, out.first(wanted));
  at_ += got;
  return got;
}

Base64Bytes::Base64Bytes(const InputFile& file, std::uint64_t begin, std::uint64_t end)
    : file_(file), at_(begin), end_(end), text_(std::min<std::uint64_t>(kBufferBytes, end - begin)) {}

void Base64Bytes::fail(const char* reason) const {
  SourcePlace place{file_.path()};
  place.byte = at_ - (filled_ - next_);
  throw ImportError(std::move(place), reason);
}

bool Base64Bytes::fill() {
  if (next_ < filled_) return true;
  next_ = 0;
  filled_ = file_.read(
      at_, std::as_writable_bytes(std::span(text_)).first(std::min<std::uint64_t>(text_.size(), end_ - at_)));
  at_ += filled_;
  return filled_ > 0;
}

// Four characters; false at the end of the text.
bool Base64Bytes::nextGroup() {
  std::array<unsigned, 4> sextets{};
  std::size_t count = 0;
  std::size_t padding = 0;
  while (count < 4) {
    if (!fill()) {
      if (count == 0) return false;
      fail("the base64 text ends inside a group of four characters");
    }
    const unsigned char sextet = kSextets[text_[next_++]];
    if (sextet == kBlank) continue;
    if (sextet == kWrong || (padding > 0 && sextet != kPadding)) fail("this is not base64 text");
    if (sextet == kPadding) ++padding;
    sextets[count++] = sextet == kPadding ? 0 : sextet;
  }
  if (padding > 2) fail("this is not base64 text");
  const unsigned bits = sextets[0] << 18U | sextets[1] << 12U | sextets[2] << 6U | sextets[3];
  group_ = {std::byte(bits >> 16U), std::byte(bits >> 8U & 0xFFU), std::byte(bits & 0xFFU)};
  groupAt_ = 0;
  groupEnd_ = 3 - padding;
  return true;
}

std::size_t Base64Bytes::read(std::span<std::byte> out) {
  std::size_t done = 0;
  while (done < out.size()) {
    // Whole groups without blanks or padding, which is nearly all of them.
    while (groupAt_ == groupEnd_ && out.size() - done >= 3 && filled_ - next_ >= 4) {
      const unsigned char* const from = text_.data() + next_;
      const unsigned a = kSextets[from[0]];
      const unsigned b = kSextets[from[1]];
      const unsigned c = kSextets[from[2]];
      const unsigned d = kSextets[from[3]];
      if ((a | b | c | d) >= kBlank) break;
      const unsigned bits = a << 18U | b << 12U | c << 6U | d;
      out[done] = std::byte(bits >> 16U);
      out[done + 1] = std::byte(bits >> 8U & 0xFFU);
      out[done + 2] = std::byte(bits & 0xFFU);
      done += 3;
      next_ += 4;
    }
    if (done == out.size()) break;
    if (groupAt_ == groupEnd_ && !nextGroup()) break;
    while (groupAt_ < groupEnd_ && done < out.size()) out[done++] = group_[groupAt_++];
  }
  return done;
}

struct UnpackedBytes::Inflater {
  Inflater() {
    if (::inflateInit(&stream) != Z_OK) throw std::bad_alloc();
  }
  ~Inflater() { ::inflateEnd(&stream); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  z_stream stream{};
};

UnpackedBytes::UnpackedBytes(std::unique_ptr<ByteStream> packed, Blocks blocks, const InputFile& file)
    : packed_(std::move(packed)),
      blocks_(std::move(blocks)),
      file_(file),
      inflater_(std::make_unique<Inflater>()),
      input_(kBufferBytes) {
  if (!blocks_.packedSizes.empty()) beginBlock();
}

UnpackedBytes::~UnpackedBytes() = default;

void UnpackedBytes::fail(const char* reason) const { throw ImportError(file_.path(), 0, reason); }

void UnpackedBytes::beginBlock() {
  const bool isLast = block_ + 1 == blocks_.packedSizes.size();
  packedLeft_ = blocks_.packedSizes[block_];
  bytesLeft_ = isLast ? blocks_.lastBytes : blocks_.blockBytes;
  isEnded_ = false;
  ::inflateReset(&inflater_->stream);
  inflater_->stream.avail_in = 0;
}

void UnpackedBytes::refill() {
  z_stream& stream = inflater_->stream;
  if (stream.avail_in > 0 || packedLeft_ == 0) return;
  const std::size_t wanted = std::min<std::uint64_t>(input_.size(), packedLeft_);
  const std::size_t got = packed_->read(std::span(input_).first(wanted));
  if (got < wanted) throw CutOff(file_.path(), 0, "the file ends inside a packed block");
  packedLeft_ -= got;
  stream.next_in = reinterpret_cast<Bytef*>(input_.data());
  stream.avail_in = static_cast<uInt>(got);
}

void UnpackedBytes::inflateInto(std::span<std::byte> out) {
  z_stream& stream = inflater_->stream;
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  while (stream.avail_out > 0) {
    refill();
    const int outcome = ::inflate(&stream, Z_NO_FLUSH);
    if (outcome == Z_STREAM_END) {
      isEnded_ = true;
      break;
    }
    if (outcome != Z_OK) fail("a packed block is damaged");
  }
  if (stream.avail_out > 0) fail("a packed block holds less than it says");
  bytesLeft_ -= out.size();
}

// More than the block says, or bytes behind its end, are damage too.
void UnpackedBytes::endBlock() {
  z_stream& stream = inflater_->stream;
  Bytef more = 0;
  while (!isEnded_) {
    refill();
    stream.next_out = &more;
    stream.avail_out = 1;
    const int outcome = ::inflate(&stream, Z_NO_FLUSH);
    if (stream.avail_out == 0) fail("a packed block holds more than it says");
    if (outcome != Z_OK && outcome != Z_STREAM_END) fail("a packed block is damaged");
    isEnded_ = outcome == Z_STREAM_END;
  }
  if (stream.avail_in > 0 || packedLeft_ > 0) fail("a packed block has another size than the file says");
}

std::size_t UnpackedBytes::read(std::span<std::byte> out) {
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 30U;  // zlib counts in 32 bits
  std::size_t done = 0;
  while (done < out.size() && block_ < blocks_.packedSizes.size()) {
    const std::size_t take = std::min<std::uint64_t>({out.size() - done, bytesLeft_, kMostAtOnce});
    if (take > 0) inflateInto(out.subspan(done, take));
    done += take;
    if (bytesLeft_ > 0) continue;
    endBlock();
    if (++block_ < blocks_.packedSizes.size()) beginBlock();
  }
  return done;
}

}  // namespace importers::vtk
