#include "inspect/configuration_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "base/control_characters.h"
#include "inspect/nearest_keyword.h"
#include "result/configuration_keywords.h"

namespace inspect {

namespace {

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool isOfWord(char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; }

bool isInCapitals(std::string_view word) {
  return std::any_of(word.begin(), word.end(), isLetter) &&
         std::none_of(word.begin(), word.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

struct Word {
  std::string_view text;
  char before = ' ';  // what stands before it
};

std::vector<Word> wordsOf(std::string_view line) {
  std::vector<Word> words;
  for (std::size_t at = 0; at < line.size();) {
    if (!isOfWord(line[at])) {
      ++at;
      continue;
    }
    const std::size_t begin = at;
    while (at < line.size() && isOfWord(line[at])) ++at;
    words.push_back({line.substr(begin, at - begin), begin == 0 ? ' ' : line[begin - 1]});
  }
  return words;
}

bool isKeyword(std::string_view word) {
  return word == kPercentageKeyword || std::any_of(kSwitchKeywords.begin(), kSwitchKeywords.end(),
                                                   [&](const SwitchKeyword& keyword) { return keyword.text == word; });
}

// The longest keyword in a text; empty where there is none.
std::string_view keywordIn(std::string_view text) {
  std::string_view longest = text.find(kPercentageKeyword) == std::string_view::npos ? "" : kPercentageKeyword;
  for (const SwitchKeyword& keyword : kSwitchKeywords) {
    const bool isThere = text.find(keyword.text) != std::string_view::npos;
    if (isThere && keyword.text.size() > longest.size()) longest = keyword.text;
  }
  return longest;
}

bool looksLikeComment(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t");
  if (first == std::string_view::npos) return false;
  const std::string_view text = line.substr(first);
  return std::string_view("#!*;$%").find(text.front()) != std::string_view::npos || text.starts_with("//") ||
         text.starts_with("--");
}

// Whether a number begins behind the blanks, as leadingNumber() reads it.
bool startsWithNumber(std::string_view text) {
  const auto skip = [&](std::string_view characters, std::size_t most) {
    for (; most > 0 && !text.empty() && characters.find(text.front()) != std::string_view::npos; --most) {
      text.remove_prefix(1);
    }
  };
  skip(" \t\n\v\f\r", text.size());
  skip("+-", 1);
  skip(".", 1);
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

class WordReader {
 public:
  explicit WordReader(const Configuration& configuration) : configuration_(configuration) {}

  Remarks run() {
    for (number_ = 0; number_ < configuration_.lines.size(); ++number_) {
      line_ = configuration_.lines[number_];
      words_ = wordsOf(line_);
      const bool counts = configuration_.start && number_ >= *configuration_.start;
      if (counts) {
        readLine();
      } else {
        readLineBefore();
      }
    }
    if (!configuration_.start) remarks_.push_back({0, missingStart()});
    if (configuration_.refusal) remarks_.push_back({configuration_.refusal->line + 1, configuration_.refusal->reason});
    return std::move(remarks_);
  }

 private:
  void say(std::string reason) { remarks_.push_back({number_ + 1, std::move(reason)}); }

  // Text may stand there, and names of keywords in it; a line of keywords alone was meant to count.
  void readLineBefore() {
    const bool areAll = !words_.empty() && std::all_of(words_.begin(), words_.end(),
                                                       [](const Word& word) { return isKeyword(word.text); });
    if (areAll)
      say(fmt::format("{} does not count: it stands before the line with {}", words_.front().text,
                      kConfigurationStart));
  }

  void readLine() {
    const bool isMark = line_.find(kConfigurationStart) != std::string_view::npos;
    if (!isMark && looksLikeComment(line_) && !keywordIn(line_).empty()) {
      say(fmt::format("{} counts, although the line looks like a comment", keywordIn(line_)));
    }
    for (std::size_t i = 0; i < words_.size();) i += readWord(i, isMark);
    if (line_.find(kPercentageKeyword) != std::string_view::npos) readPercentage();
  }

  // Returns how many words it has read.
  std::size_t readWord(std::size_t i, bool isMark) {
    if (const std::size_t count = readDivided(i)) return count;
    const std::string_view word = words_[i].text;
    if (isKeyword(word)) return 1;
    const std::string_view contained = keywordIn(word);
    const NearestKeyword nearest = nearestKeyword(word);
    if (!contained.empty()) {
      const std::string meant =
          nearest.keyword == contained ? "" : fmt::format("; the nearest keyword is {}", nearest.keyword);
      say(fmt::format("\"{}\" counts as {}, which it contains{}", word, contained, meant));
    } else if (!isMark && isSuspect(word, nearest)) {
      say(nearest.distance == 0
              ? fmt::format("\"{}\" is not a keyword: keywords are in capitals, {}", word, nearest.keyword)
              : fmt::format("\"{}\" is not a keyword; the nearest is {}", word, nearest.keyword));
    }
    return 1;
  }

  // Words that would be a keyword with "_" between them: "EXTRACT MASS", "EXTRACT-FIELD-SETS".
  std::size_t readDivided(std::size_t i) {
    constexpr std::size_t kMostWords = 4;
    for (std::size_t count = std::min(kMostWords, words_.size() - i); count > 1; --count) {
      std::string joined(words_[i].text);
      std::string given(words_[i].text);
      bool isJoined = isInCapitals(joined);
      for (std::size_t k = 1; isJoined && k < count; ++k) {
        const Word& word = words_[i + k];
        const bool isNext = word.text.data() == words_[i + k - 1].text.data() + words_[i + k - 1].text.size() + 1;
        isJoined = isNext && (word.before == ' ' || word.before == '-') && isInCapitals(word.text);
        joined.append("_").append(word.text);
        given.append(1, word.before).append(word.text);
      }
      if (!isJoined || !isKeyword(joined)) continue;
      const std::string_view counts = keywordIn(given);
      say(fmt::format("\"{}\" is not a keyword; the nearest is {}{}", given, joined,
                      counts.empty() ? "" : fmt::format(" ({} in it counts)", counts)));
      return count;
    }
    return 0;
  }

  // Whether a word is one that was meant to be a keyword: near to one, written like one, or alone in its line.
  bool isSuspect(std::string_view word, const NearestKeyword& nearest) const {
    constexpr std::size_t kLettersPerSlip = 4;
    constexpr std::size_t kShortest = 4;
    if (!std::any_of(word.begin(), word.end(), isLetter) || word.size() < kShortest) return false;
    if (nearest.distance <= word.size() / kLettersPerSlip) return true;
    const bool looksLikeOne = isInCapitals(word) && word.find('_') != std::string_view::npos;
    return looksLikeOne || (words_.size() == 1 && isInCapitals(word));
  }

  void readPercentage() {
    const std::size_t equals = line_.find('=');
    if (equals == std::string_view::npos) return;
    if (equals < line_.find(kPercentageKeyword))
      say("PERCENTAGE takes the number after the first \"=\" of the line, which stands before it");
    const std::string text(line_.substr(equals + 1));
    const double value = leadingNumber(text);
    if (!startsWithNumber(text)) {
      say(fmt::format("PERCENTAGE is 0, because \"{}\" is not a number", base::escaped(text)));
    } else if (value < 0 || value > 100) {
      say(fmt::format("PERCENTAGE is {:.6g}, which is not from 0 to 100", value));
    }
  }

  std::string missingStart() const {
    constexpr std::size_t kSlips = 3;
    std::string reason = fmt::format("there is no line with {}: nothing in the file counts", kConfigurationStart);
    std::size_t least = kSlips + 1;
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < configuration_.lines.size(); ++i) {
      const std::size_t distance = distanceToStart(configuration_.lines[i]);
      if (distance < least) {
        least = distance;
        nearest = i + 1;
      }
    }
    return nearest == 0 ? reason : reason + fmt::format("; line {} comes nearest", nearest);
  }

  // Of the part of a line that comes nearest.
  static std::size_t distanceToStart(std::string_view line) {
    std::string capitals;
    for (const char c : line) capitals += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    constexpr std::size_t kLongest = 200;  // what a person writes
    capitals.resize(std::min(capitals.size(), kLongest));
    std::size_t least = editDistance(capitals, kConfigurationStart);
    for (std::size_t at = 0; at + kConfigurationStart.size() <= capitals.size(); ++at) {
      const std::string_view part = std::string_view(capitals).substr(at, kConfigurationStart.size());
      least = std::min(least, editDistance(part, kConfigurationStart));
    }
    return least;
  }

  const Configuration& configuration_;
  std::size_t number_ = 0;
  std::string_view line_;
  std::vector<Word> words_;
  Remarks remarks_;
};

}  // namespace

Remarks wordRemarks(const Configuration& configuration) { return WordReader(configuration).run(); }

}  // namespace inspect
