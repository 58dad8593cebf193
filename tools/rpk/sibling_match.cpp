#include "tools/rpk/sibling_match.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace rpk {
namespace {

// Above, the nearest are looked for among neighbours only.
constexpr std::size_t kMostPairs = 1'000'000;
constexpr std::size_t kMostNeighbours = 32;

// Smaller is nearer: other content is worse than any distance, then how far apart, then how much turned.
using Cost = std::tuple<int, double, double>;

using Bits = std::array<std::uint64_t, 16>;

Bits bitsOf(const Group& group) {
  Bits bits;
  const Matrix placement = group.placement.value_or(kIdentity);
  // Adding 0 makes one zero of both.
  std::transform(placement.begin(), placement.end(), bits.begin(),
                 [](double value) { return std::bit_cast<std::uint64_t>(value + 0.0); });
  return bits;
}

double orGreatest(double value) { return std::isfinite(value) ? value : std::numeric_limits<double>::max(); }

using Cell = std::array<double, 3>;

// Space in cubes of one size.
class Cells {
 public:
  explicit Cells(double size) : size_(size) {}

  Cell of(const Group& group) const {
    const Matrix placement = group.placement.value_or(kIdentity);
    Cell cell{};
    for (std::size_t k = 0; k < 3; ++k) {
      const double value = std::floor(placement[12 + k] / size_);
      cell[k] = std::isfinite(value) ? value : 0;
    }
    return cell;
  }

  // The cube itself first, then those that touch it.
  template <typename Action>
  static void forEachAround(const Cell& cell, const Action& action) {
    action(cell);
    for (const double x : {-1.0, 0.0, 1.0}) {
      for (const double y : {-1.0, 0.0, 1.0}) {
        for (const double z : {-1.0, 0.0, 1.0}) {
          if (x != 0 || y != 0 || z != 0) action(Cell{cell[0] + x, cell[1] + y, cell[2] + z});
        }
      }
    }
  }

 private:
  double size_;
};

// Twice the largest coordinate of a placement, as far as they are numbers.
double roomOf(const std::vector<const Group*>& groups) {
  double room = 0;
  for (const Group* group : groups) {
    const Matrix placement = group->placement.value_or(kIdentity);
    for (std::size_t k = 12; k < 15; ++k) {
      if (std::isfinite(placement[k])) room = std::max(room, 2 * std::abs(placement[k]));
    }
  }
  return std::isfinite(room) ? room : 0;
}

class Matcher {
 public:
  Matcher(const std::vector<const Group*>& first, const std::vector<const Group*>& second, const ContentOf& contentOf)
      : first_(first), second_(second), partner_(first.size()), taken_(second.size(), false), contentOf_(contentOf) {}

  std::vector<GroupPair> match() {
    if (first_.size() == 1 && second_.size() == 1) {
      take(0, 0);
    } else {
      matchEqual([this](const Group& group) { return std::pair(bitsOf(group), contentOf_(group)); });
      matchEqual([](const Group& group) { return bitsOf(group); });
      matchNearest();
    }
    std::vector<GroupPair> pairs;
    for (std::size_t i = 0; i < first_.size(); ++i) {
      pairs.push_back({first_[i], partner_[i] ? second_[*partner_[i]] : nullptr});
    }
    for (std::size_t j = 0; j < second_.size(); ++j) {
      if (!taken_[j]) pairs.push_back({nullptr, second_[j]});
    }
    return pairs;
  }

 private:
  void take(std::size_t i, std::size_t j) {
    partner_[i] = j;
    taken_[j] = true;
  }

  // Those that are left, in order.
  std::vector<std::size_t> freeFirst() const {
    std::vector<std::size_t> free;
    for (std::size_t i = 0; i < first_.size(); ++i) {
      if (!partner_[i]) free.push_back(i);
    }
    return free;
  }

  std::vector<std::size_t> freeSecond() const {
    std::vector<std::size_t> free;
    for (std::size_t j = 0; j < second_.size(); ++j) {
      if (!taken_[j]) free.push_back(j);
    }
    return free;
  }

  template <typename KeyOf>
  void matchEqual(const KeyOf& keyOf) {
    const std::vector<std::size_t> free = freeSecond();
    if (free.empty()) return;
    std::map<decltype(keyOf(*first_[0])), std::vector<std::size_t>> waiting;
    for (auto j = free.rbegin(); j != free.rend(); ++j) waiting[keyOf(*second_[*j])].push_back(*j);
    for (const std::size_t i : freeFirst()) {
      const auto found = waiting.find(keyOf(*first_[i]));
      if (found == waiting.end() || found->second.empty()) continue;
      take(i, found->second.back());
      found->second.pop_back();
    }
  }

  Cost cost(std::size_t i, std::size_t j) const {
    const Matrix before = first_[i]->placement.value_or(kIdentity);
    const Matrix after = second_[j]->placement.value_or(kIdentity);
    double turned = 0;
    for (std::size_t k = 0; k < 12; ++k) turned += std::abs(after[k] - before[k]);
    const double distance = std::hypot(after[12] - before[12], after[13] - before[13], after[14] - before[14]);
    return {contentOf_(*first_[i]) == contentOf_(*second_[j]) ? 0 : 1, orGreatest(distance), orGreatest(turned)};
  }

  using Assignment = std::vector<std::pair<std::size_t, std::size_t>>;

  void matchNearest() {
    if (tooMany(freeFirst(), freeSecond())) matchNearby();
    const std::vector<std::size_t> left = freeFirst();
    const std::vector<std::size_t> right = freeSecond();
    if (left.empty() || right.empty()) return;
    Assignment best = inOrder(left, right);
    if (!tooMany(left, right)) {
      Assignment near = nearest(left, right);
      // A row of siblings that moved together stays in order.
      if (left.size() != right.size() || total(near) < total(best)) best = std::move(near);
    }
    for (const auto& [i, j] : best) take(i, j);
  }

  static bool tooMany(const std::vector<std::size_t>& left, const std::vector<std::size_t>& right) {
    return !right.empty() && left.size() > kMostPairs / right.size();
  }

  // Only what stands in the same or the next cube is compared: small cubes first, then larger ones for what is left.
  void matchNearby() {
    constexpr double kSmallest = 1.0 / 32768;
    const double room = roomOf(first_);
    for (double share = kSmallest; room > 0 && share <= 1 && tooMany(freeFirst(), freeSecond()); share *= 8) {
      matchWithin(Cells(room * share));
    }
  }

  void matchWithin(const Cells& cells) {
    std::map<Cell, std::vector<std::size_t>> there;
    for (const std::size_t j : freeSecond()) there[cells.of(*second_[j])].push_back(j);
    std::vector<std::tuple<Cost, std::size_t, std::size_t>> all;
    for (const std::size_t i : freeFirst()) {
      std::size_t left = kMostNeighbours;
      Cells::forEachAround(cells.of(*first_[i]), [&](const Cell& cell) {
        const auto found = there.find(cell);
        if (found == there.end()) return;
        for (const std::size_t j : found->second) {
          if (left == 0) return;
          all.emplace_back(cost(i, j), i, j);
          --left;
        }
      });
    }
    std::sort(all.begin(), all.end());
    for (const auto& [unused, i, j] : all) {
      if (!partner_[i] && !taken_[j]) take(i, j);
    }
  }

  static Assignment inOrder(const std::vector<std::size_t>& left, const std::vector<std::size_t>& right) {
    Assignment pairs;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) pairs.emplace_back(left[i], right[i]);
    return pairs;
  }

  Assignment nearest(const std::vector<std::size_t>& left, const std::vector<std::size_t>& right) const {
    std::vector<std::tuple<Cost, std::size_t, std::size_t>> pairs;
    pairs.reserve(left.size() * right.size());
    for (const std::size_t i : left) {
      for (const std::size_t j : right) pairs.emplace_back(cost(i, j), i, j);
    }
    std::sort(pairs.begin(), pairs.end());
    std::vector<bool> leftTaken(first_.size());
    std::vector<bool> rightTaken(second_.size());
    Assignment chosen;
    for (const auto& [unused, i, j] : pairs) {
      if (leftTaken[i] || rightTaken[j]) continue;
      leftTaken[i] = rightTaken[j] = true;
      chosen.emplace_back(i, j);
    }
    return chosen;
  }

  Cost total(const Assignment& pairs) const {
    Cost sum{};
    for (const auto& [i, j] : pairs) {
      const auto [other, distance, turned] = cost(i, j);
      std::get<0>(sum) += other;
      std::get<1>(sum) += distance;
      std::get<2>(sum) += turned;
    }
    return sum;
  }

  const std::vector<const Group*>& first_;
  const std::vector<const Group*>& second_;
  std::vector<std::optional<std::size_t>> partner_;  // in the second list, of each of the first
  std::vector<bool> taken_;
  const ContentOf& contentOf_;
};

}  // namespace

std::vector<GroupPair> matchSiblings(const std::vector<const Group*>& first, const std::vector<const Group*>& second,
                                     const ContentOf& contentOf) {
  return Matcher(first, second, contentOf).match();
}

}  // namespace rpk
