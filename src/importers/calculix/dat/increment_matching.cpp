#include "importers/calculix/dat/increment_matching.h"

#include <algorithm>
#include <limits>

#include "importers/calculix/dat/match_places.h"

namespace importers::calculix {

namespace {

// What a match is charged for besides the cost of its place; the cheapest one is taken.
constexpr int kLeftOut = 2;      // results are written after the increment, but no time is its own
constexpr int kSameAsKnown = 4;  // as far as the time has digits it is that of a known increment or the start
constexpr int kNotAsked = 6;     // the step does not print such tables

// More would take longer than a match is worth: then the order of the times decides.
constexpr std::size_t kMostCandidates = 4'000'000;

// FREQUENCY of decks that are not there.
constexpr int kLargestFrequency = 10'000;

class Matching {
 public:
  Matching(const std::vector<PrintedTime>& times, const std::vector<StepInTime>& steps, bool mayGoOn)
      : times_(times), steps_(steps), places_(matchPlaces(steps, mayGoOn ? newSteps(times) : 0)) {}

  std::optional<std::vector<TimeMatch>> find() {
    if (const auto exact = inOrder()) return exact;
    const auto isLater = [](const MatchPlace& a, const MatchPlace& b) {
      return a.range.low > b.range.low || a.range.high > b.range.high;
    };
    isAscending_ = std::adjacent_find(places_.begin(), places_.end(), isLater) == places_.end();
    for (const MatchPlace& place : places_) {
      expected_.push_back((expected_.empty() ? 0 : expected_.back()) + (place.isExpected ? 1 : 0));
    }
    for (std::size_t i = 0; i < times_.size(); ++i) {
      addCandidates(i);
      if (candidates_.back().empty()) return std::nullopt;
      if (count_ > kMostCandidates) return greedily();
    }
    return cheapest();
  }

 private:
  struct Candidate {
    std::size_t place = 0;
    int cost = 0;
    // The first and the last of the cheapest ones for the time before.
    std::size_t first = 0;
    std::size_t last = 0;
  };

  // So many steps more there may be: times that do not grow.
  static std::size_t newSteps(const std::vector<PrintedTime>& times) {
    std::size_t count = 1;
    for (std::size_t i = 1; i < times.size(); ++i) count += times[i].time.high <= times[i - 1].time.high ? 1 : 0;
    return count;
  }

  bool fits(std::size_t time, std::size_t place) const { return times_[time].time.meets(places_[place].range); }

  int costOf(std::size_t time, std::size_t place) const {
    const std::vector<bool>& askedBy = times_[time].askedBy;
    const std::size_t step = places_[place].step;
    const bool isAsked = askedBy.empty() || step >= askedBy.size() || askedBy[step];
    const Rounded& range = places_[place].range;
    const bool isApart =
        places_[place].increment || (times_[time].time.low > range.low && times_[time].time.high < range.high);
    return places_[place].cost + (isAsked ? 0 : kNotAsked) + (isApart ? 0 : kSameAsKnown);
  }

  // The increments after which results are written, if there are as many as times and all of them agree. Without deck
  // and result file the solver may have written every n-th one.
  std::optional<std::vector<TimeMatch>> inOrder() const {
    std::optional<std::vector<TimeMatch>> found;
    const bool isCounted = std::any_of(steps_.begin(), steps_.end(), [](const StepInTime& step) {
      return step.step->deck == nullptr && !step.step->hasFrames;
    });
    for (int frequency = 1; frequency <= (isCounted ? kLargestFrequency : 1); ++frequency) {
      const std::vector<std::size_t> expected = expectedPlaces(frequency);
      if (expected.size() < times_.size()) break;
      if (expected.size() > times_.size() || !allFit(expected)) continue;
      std::vector<TimeMatch> match;
      for (const std::size_t place : expected) match.push_back(matchAt(place));
      const auto isSame = [](const TimeMatch& a, const TimeMatch& b) {
        return a.step == b.step && a.increment == b.increment;
      };
      if (found && !std::equal(match.begin(), match.end(), found->begin(), isSame)) return std::nullopt;
      found = std::move(match);
    }
    return found;
  }

  std::vector<std::size_t> expectedPlaces(int frequency) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < places_.size() && found.size() <= times_.size(); ++i) {
      const MatchPlace& place = places_[i];
      if (!place.increment || !place.isExpected) continue;
      const RunStep& step = *steps_[place.step].step;
      const KnownIncrement& known = step.increments[*place.increment];
      const bool isLast = *place.increment + 1 == step.increments.size();
      const bool isCounted = step.deck == nullptr && !step.hasFrames && !isLast && known.number;
      if (!isCounted || *known.number % frequency == 0) found.push_back(i);
    }
    return found;
  }

  bool allFit(const std::vector<std::size_t>& places) const {
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (!fits(i, places[i]) || costOf(i, places[i]) > 0) return false;
    }
    return true;
  }

  TimeMatch matchAt(std::size_t place) const {
    const MatchPlace& at = places_[place];
    const std::size_t known = steps_.size();
    const int last = known == 0 ? 0 : steps_.back().number;
    return {at.step < known ? steps_[at.step].number : last + 1 + static_cast<int>(at.step - known), at.increment,
            true};
  }

  void addCandidates(std::size_t time) {
    std::vector<Candidate> found;
    const Rounded& range = times_[time].time;
    // Where times only grow, those that fit lie together.
    const auto low = [&](const MatchPlace& place) { return isAscending_ && place.range.high < range.low; };
    const auto first = std::partition_point(places_.begin(), places_.end(), low);
    for (auto place = static_cast<std::size_t>(first - places_.begin()); place < places_.size(); ++place) {
      if (isAscending_ && places_[place].range.low > range.high) break;
      if (fits(time, place)) found.push_back({place, 0, 0, 0});
    }
    count_ += found.size();
    candidates_.push_back(std::move(found));
  }

  // How many increments before a place get results.
  int expectedBefore(std::size_t place) const { return expected_[place] - (places_[place].isExpected ? 1 : 0); }

  std::optional<std::vector<TimeMatch>> cheapest() {
    for (Candidate& candidate : candidates_.front()) {
      candidate.cost = costOf(0, candidate.place) + kLeftOut * expectedBefore(candidate.place);
    }
    for (std::size_t time = 1; time < times_.size(); ++time) {
      if (!advance(time)) return std::nullopt;
    }
    return trace();
  }

  // The cheapest ways to the candidates of a time; unreachable candidates are dropped.
  bool advance(std::size_t time) {
    const std::vector<Candidate>& before = candidates_[time - 1];
    std::vector<Candidate> reached;
    constexpr int kNone = std::numeric_limits<int>::max();
    int least = kNone;
    std::size_t first = 0;
    std::size_t last = 0;
    std::size_t next = 0;
    for (Candidate candidate : candidates_[time]) {
      // All that lie before it, by their cost without what is left out after them.
      for (; next < before.size() && before[next].place < candidate.place; ++next) {
        const int cost = before[next].cost - kLeftOut * expected_[before[next].place];
        if (cost < least) first = next;
        if (cost <= least) last = next;
        least = std::min(least, cost);
      }
      int cost = least == kNone ? kNone : least + kLeftOut * expectedBefore(candidate.place);
      candidate.first = first;
      candidate.last = last;
      if (const auto same = sameTime(time, candidate.place, next); same && same->cost <= cost) {
        if (same->cost < cost) candidate.first = next;
        candidate.last = next;
        cost = same->cost;
      }
      if (cost == kNone) continue;
      candidate.cost = cost + costOf(time, candidate.place);
      reached.push_back(candidate);
    }
    candidates_[time] = std::move(reached);
    return !candidates_[time].empty();
  }

  bool isPeriodic(std::size_t step) const {
    return step < steps_.size() && steps_[step].step->deck != nullptr && steps_[step].step->deck->isPeriodic;
  }

  // From a place between increments to the same one, which holds several.
  std::optional<Candidate> sameTime(std::size_t time, std::size_t place, std::size_t next) const {
    const std::vector<Candidate>& before = candidates_[time - 1];
    if (places_[place].increment || next >= before.size() || before[next].place != place) return std::nullopt;
    const Rounded& a = times_[time - 1].time;
    const Rounded& b = times_[time].time;
    if (b.high < a.low && !isPeriodic(places_[place].step)) return std::nullopt;
    // An unknown step is charged once.
    const int refund = places_[place].step < steps_.size() ? 0 : places_[place].cost;
    return Candidate{place, before[next].cost - refund, 0, 0};
  }

  std::vector<TimeMatch> trace() const {
    const std::vector<Candidate>& end = candidates_.back();
    const auto total = [&](const Candidate& candidate) {
      return candidate.cost + kLeftOut * (expected_.back() - expected_[candidate.place]);
    };
    std::size_t low = 0;
    std::size_t high = 0;
    for (std::size_t i = 1; i < end.size(); ++i) {
      if (total(end[i]) < total(end[low])) low = high = i;
      if (total(end[i]) == total(end[low])) high = i;
    }
    std::vector<TimeMatch> found(times_.size());
    for (std::size_t time = times_.size(); time-- > 0;) {
      const Candidate& first = candidates_[time][low];
      const Candidate& last = candidates_[time][high];
      found[time] = matchAt(first.place);
      const TimeMatch other = matchAt(last.place);
      found[time].isCertain =
          found[time].step == other.step && found[time].increment == other.increment && !isLikeNext(time, found);
      low = first.first;
      high = last.last;
    }
    return found;
  }

  // Whether a time and the next one lie between the same known increments, and are the same by their digits.
  bool isLikeNext(std::size_t time, const std::vector<TimeMatch>& found) const {
    return time + 1 < found.size() && !found[time].increment && !found[time + 1].increment &&
           found[time].step == found[time + 1].step && times_[time].time.meets(times_[time + 1].time);
  }

  // Every time at the first place that is left for it.
  std::optional<std::vector<TimeMatch>> greedily() const {
    std::vector<TimeMatch> found;
    std::size_t next = 0;
    for (std::size_t time = 0; time < times_.size(); ++time) {
      while (next < places_.size() && !fits(time, next)) ++next;
      if (next == places_.size()) return std::nullopt;
      found.push_back(matchAt(next));
      found.back().isCertain = false;
      if (places_[next].increment) ++next;
    }
    return found;
  }

  const std::vector<PrintedTime>& times_;
  const std::vector<StepInTime>& steps_;
  std::vector<MatchPlace> places_;
  bool isAscending_ = true;    // whether the places lie in the order of their times
  std::vector<int> expected_;  // how many increments up to each place get results
  std::vector<std::vector<Candidate>> candidates_;
  std::size_t count_ = 0;
};

}  // namespace

std::optional<std::vector<TimeMatch>> matchTimes(const std::vector<PrintedTime>& times,
                                                 const std::vector<StepInTime>& steps, bool mayGoOn) {
  if (times.empty()) return std::vector<TimeMatch>();
  return Matching(times, steps, mayGoOn).find();
}

}  // namespace importers::calculix
