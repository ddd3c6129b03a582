// What a reader sees of a command: its help and its man page.
#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "tool/command.h"

namespace tool {

namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kIndent = 2;
constexpr std::size_t kColumn = 28;
constexpr std::size_t kCommandColumn = 14;

// "-o, --output DATABASE".
std::string headOf(const Option& option) {
  if (option.isArgument) return option.names + (option.isRepeated ? "..." : "");
  std::string head = fmt::format("{}", fmt::join(option.allNames(), ", "));
  if (!option.value.empty()) head += " " + option.value;
  return head;
}

// Words in lines of at most `width` characters, each line after the first after `indent` blanks.
std::string wrapped(const std::string& text, std::size_t indent, std::size_t width) {
  std::istringstream words(text);
  std::string out;
  std::size_t column = indent;
  for (std::string word; words >> word;) {
    if (column > indent && column + 1 + word.size() > width) {
      out += "\n" + std::string(indent, ' ');
      column = indent;
    }
    if (column > indent) {
      out += ' ';
      ++column;
    }
    out += word;
    column += word.size();
  }
  return out;
}

std::string rowOf(const std::string& head, const std::string& help, std::size_t column = kColumn) {
  std::string row = std::string(kIndent, ' ') + head;
  if (row.size() + 2 > column) {
    row += "\n" + std::string(column, ' ');
  } else {
    row.resize(column, ' ');
  }
  return row + wrapped(help, column, kWidth) + "\n";
}

std::string helpOf(const Option& option) {
  return option.help + (option.isRepeated && !option.isArgument ? "; may be repeated" : "");
}

std::vector<std::string> groupsOf(const std::vector<Option>& options) {
  std::vector<std::string> groups = {""};  // which --help is in
  for (const Option& option : options) {
    if (!option.isArgument && std::find(groups.begin(), groups.end(), option.group) == groups.end()) {
      groups.push_back(option.group);
    }
  }
  return groups;
}

// Text as man(7) takes it: no line begins with a control character, and what a typesetter would make something nicer of
// stands for itself.
std::string roff(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '\\':
        out += "\\e";
        break;
      case '-':
        out += "\\-";
        break;
      case '`':
        out += "\\(ga";
        break;
      case '\'':
        out += "\\(aq";
        break;
      case '^':
        out += "\\(ha";
        break;
      case '~':
        out += "\\(ti";
        break;
      case '.':
        out += out.empty() || out.back() == '\n' ? "\\&." : ".";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string dashed(std::string name) {
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

}  // namespace

std::string Command::synopsisText() const {
  std::string text;
  for (const std::string& form : synopses_) {
    text += std::string(kIndent, ' ') + name_ + " " + wrapped(form, kIndent + name_.size() + 1, kWidth) + "\n";
  }
  return text + std::string(kIndent, ' ') + name_ + " --help | --version\n";
}

std::string Command::help() const {
  std::string text = name_ + " - " + summary_ + "\n\nUsage:\n" + synopsisText();
  for (const std::string& paragraph : description_) {
    text += "\n" + (paragraph.starts_with(' ') ? paragraph : wrapped(paragraph, 0, kWidth)) + "\n";
  }
  std::string arguments;
  for (const Option& option : options_) {
    if (option.isArgument) arguments += rowOf(headOf(option), option.help);
  }
  if (!arguments.empty()) text += "\nArguments:\n" + arguments;
  if (!subcommands_.empty()) text += "\nCommands:\n";
  for (const auto& [name, summary] : subcommands_) text += rowOf(name, summary, kCommandColumn);
  for (const std::string& group : groupsOf(options_)) {
    text += "\n" + (group.empty() ? "Options" : group) + ":\n";
    for (const Option& option : options_) {
      if (!option.isArgument && option.group == group) text += rowOf(headOf(option), helpOf(option));
    }
    if (group.empty()) {
      text += rowOf(fmt::format("{}", fmt::join(helpNames(), ", ")), "print this and exit") +
              rowOf("--version", "print the version and exit");
    }
  }
  if (!exitStatuses_.empty()) text += "\nExit status:\n";
  for (const auto& [status, meaning] : exitStatuses_) text += rowOf(std::to_string(status), meaning);
  if (!examples_.empty()) text += "\nExamples:\n";
  for (const std::string& line : examples_) text += std::string(kIndent, ' ') + line + "\n";
  return text;
}

std::string Command::manPage() const {
  const std::string title = dashed(name_);
  std::string page = fmt::format(".TH \"{}\" 1 \"\" \"kolvex {}\" \"kolvex\"\n.nh\n.SH NAME\n{} \\- {}\n.SH SYNOPSIS\n",
                                 roff(title), KOLVEX_VERSION, roff(title), roff(summary_));
  for (const std::string& form : synopses_) page += fmt::format(".B {}\n{}\n.br\n", roff(name_), roff(form));
  page += fmt::format(".B {}\n\\-\\-help | \\-\\-version\n", roff(name_));
  if (!description_.empty()) page += ".SH DESCRIPTION\n";
  for (const std::string& paragraph : description_) {
    page += paragraph.starts_with(' ') ? fmt::format(".PP\n.nf\n{}\n.fi\n", roff(paragraph))
                                       : fmt::format(".PP\n{}\n", roff(paragraph));
  }
  if (!subcommands_.empty()) page += ".SH COMMANDS\n";
  for (const auto& [name, summary] : subcommands_) {
    page += fmt::format(".TP\n.BR {} (1)\n{}\n", roff(dashed(name_ + " " + name)), roff(summary));
  }
  page += ".SH OPTIONS\n";
  for (const Option& option : options_) {
    if (option.isArgument) page += fmt::format(".TP\n.I {}\n{}\n", roff(headOf(option)), roff(option.help));
  }
  for (const std::string& group : groupsOf(options_)) {
    if (!group.empty()) page += fmt::format(".SS {}\n", roff(group));
    for (const Option& option : options_) {
      if (option.isArgument || option.group != group) continue;
      page += fmt::format(".TP\n.B {}\n{}\n", roff(headOf(option)), roff(helpOf(option)));
    }
    if (group.empty()) {
      page += fmt::format(".TP\n.B {}\nprint this and exit\n", roff(fmt::format("{}", fmt::join(helpNames(), ", "))));
      page += ".TP\n.B \\-\\-version\nprint the version and exit\n";
    }
  }
  if (!exitStatuses_.empty()) page += ".SH EXIT STATUS\n";
  for (const auto& [status, meaning] : exitStatuses_) page += fmt::format(".TP\n.B {}\n{}\n", status, roff(meaning));
  if (!examples_.empty()) page += ".SH EXAMPLES\n.nf\n";
  for (const std::string& line : examples_) page += roff(line) + "\n";
  if (!examples_.empty()) page += ".fi\n";
  if (!seeAlso_.empty()) page += fmt::format(".SH SEE ALSO\n{}\n", roff(fmt::format("{}", fmt::join(seeAlso_, ", "))));
  return page;
}

}  // namespace tool
