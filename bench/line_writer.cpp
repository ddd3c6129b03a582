// The least that a program does which writes each line at once: reads a file, then writes its lines into another, one
// system call for each.
#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::ifstream in(argv[1], std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const int out = ::open(argv[2], O_CREAT | O_TRUNC | O_WRONLY, 0644);
  if (out < 0) return 1;
  std::string_view left = text;
  while (!left.empty()) {
    const std::string_view line = left.substr(0, left.find('\n') + 1);
    if (::write(out, line.data(), line.size()) != static_cast<ssize_t>(line.size())) return 1;
    left.remove_prefix(line.size());
  }
  return ::close(out);
}
