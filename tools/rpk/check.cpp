#include "tools/rpk/check.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <optional>
#include <unordered_set>
#include <utility>

#include "tools/rpk/check_arrays.h"
#include "tools/rpk/check_grammar.h"
#include "tools/rpk/check_mesh.h"
#include "tools/rpk/check_nurbs.h"
#include "tools/rpk/check_reporter.h"
#include "tools/rpk/check_script.h"
#include "tools/rpk/group_flags.h"

namespace rpk {
namespace {

// Placements are text of six digits.
constexpr double kRigidError = 1e-4;

using MatrixValues = std::array<double, 16>;

double rowProduct(const MatrixValues& matrix, std::size_t first, std::size_t second) {
  double sum = 0;
  for (std::size_t i = 0; i < 3; ++i) sum += matrix[4 * first + i] * matrix[4 * second + i];
  return sum;
}

// A rotation and a translation, neither scaled nor mirrored.
bool isRigid(const MatrixValues& m) {
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t other = row; other < 3; ++other) {
      if (std::abs(rowProduct(m, row, other) - (row == other ? 1 : 0)) > kRigidError) return false;
    }
  }
  const double determinant =
      m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) + m[2] * (m[4] * m[9] - m[5] * m[8]);
  return determinant > 0 && m[3] == 0 && m[7] == 0 && m[11] == 0 && m[15] == 1;
}

bool isBadHex(const Word& word) {
  return word.kind == Word::Kind::kBare &&
         (word.text.starts_with("xX") || (word.text.starts_with("bX") && word.text.size() > 2));
}

// A word between quotes with bytes that only the hexadecimal form may hold.
bool hasStrangeBytes(const Word& word) {
  return word.kind == Word::Kind::kName && word.source.starts_with('"') &&
         std::any_of(word.text.begin(), word.text.end(),
                     [](char c) { return static_cast<unsigned char>(c) >= 0x80 || c == '\r'; });
}

class Checker : public PackageVisitor {
 public:
  Checker(std::string_view bytes, const CheckLimits& limits, const PassedBytes& passed)
      : reporter_(bytes, limits, passed), script_(reporter_) {}

  void comment(const Comment& comment) override { script_.comment(comment, open_.empty()); }
  void openBlock(const Block& block) override;
  void closeBlock(const BlockEnd& end) override;
  void parameter(const Parameter& parameter) override;
  void line(const Line& line) override;
  void fault(const Fault& fault) override;
  void passing(std::size_t offset) override { reporter_.passedUntil(offset); }

  CheckReport finish(std::size_t readerFaults);

 private:
  struct OpenBlock {
    BlockKind kind = BlockKind::kUnknown;
    Vocabulary vocabulary = Vocabulary::kFree;
    Place place;
    std::uint32_t seen = 0;     // bits of the vocabulary's parameters
    bool damaged = false;       // the reader found faults in it: what is missing may be theirs
    bool changesOther = false;  // #define or #modify
    bool hasShader = false;
  };
  struct OpenGroup {
    std::string name;
    bool materialGroup = false;
    bool holdsGeometry = false;
  };

  BlockKind parent() const { return open_.empty() ? BlockKind::kTop : open_.back().kind; }
  BlockKind checkOpening(const Block& block);
  void checkBlockLine(const Block& block, const BlockRule& rule);
  void enter(const Block& block, const OpenBlock& open);
  // False when one of them is no valid name.
  bool checkNames(std::span<const Word> words, const Place& place);

  void knownParameter(const Parameter& parameter, OpenBlock& open);
  void checkWords(const Parameter& parameter, const ParameterRule& rule);
  void checkFinite(std::span<const Word> words, const Place& place);
  CheckedArray checkArray(const Parameter& parameter, char tag, bool anyTag);
  void keepArray(Vocabulary vocabulary, std::string_view name, const CheckedArray& array);
  void keepValue(Vocabulary vocabulary, const Parameter& parameter);
  void checkSource(const Parameter& parameter);

  void placement(const Line& line);
  void closeGroup();
  void closeGeometry(const OpenBlock& open);
  void checkMissing(const OpenBlock& open);
  void closeAnimation(const OpenBlock& open);

  CheckReporter reporter_;
  ScriptCheck script_;
  std::vector<OpenBlock> open_;
  std::vector<OpenGroup> groups_;
  bool inGeometry_ = false;
  // Of the geometry or animation block that is open; none of these nest where they belong.
  CheckedMesh mesh_;
  CheckedNurbs nurbs_;
  CheckedArray matrices_;
  CheckedArray timestamps_;
  std::unordered_set<std::string> sources_;    // groups with geometry that have ended
  std::unordered_set<std::string> materials_;  // defined so far
};

void Checker::openBlock(const Block& block) {
  if (!inGeometry_) reporter_.passedUntil(block.place.offset);
  reporter_.openBlock(block);
  if (open_.empty()) script_.openTopBlock(block);
  OpenBlock open;
  open.kind = checkOpening(block);
  open.place = block.place;
  open.changesOther = !block.directive.empty();
  if (open.kind != BlockKind::kUnknown) open.vocabulary = vocabularyOf(open.kind, block);
  if (inGeometry_) open.vocabulary = Vocabulary::kFree;
  enter(block, open);
  open_.push_back(open);
}

BlockKind Checker::checkOpening(const Block& block) {
  if (block.words.empty()) return BlockKind::kUnknown;  // the reader has told
  if (!checkNames(block.words, block.place)) return BlockKind::kUnknown;
  const BlockRule* rule = findBlockRule(block.keyword);
  if (!rule) {
    reporter_.report(CheckKind::kUnknownBlock, block.place,
                     fmt::format("\"{}\" is no block that is known", block.keyword));
    return BlockKind::kUnknown;
  }
  const BlockKind around = parent();
  if (around != BlockKind::kUnknown && !allows(rule->parents, around)) {
    reporter_.report(CheckKind::kMisplacedBlock, block.place,
                     fmt::format("{} does not belong into {}", blockKindName(rule->kind), blockKindName(around)));
  }
  checkBlockLine(block, *rule);
  return rule->kind;
}

void Checker::checkBlockLine(const Block& block, const BlockRule& rule) {
  const auto names = static_cast<int>(block.nameCount());
  const bool defined = block.directive == "#define";
  const int least = rule.kind == BlockKind::kGeometry && defined ? rule.mostNames : rule.leastNames;
  const int most = rule.kind == BlockKind::kGeometry && !defined ? rule.leastNames : rule.mostNames;
  if (names < least || names > most) {
    reporter_.report(CheckKind::kBadValue, block.place,
                     fmt::format("{} with {} names", blockKindName(rule.kind), names));
  }
  const bool numbered = rule.kind == BlockKind::kMotion || rule.kind == BlockKind::kFrame;
  const auto numbers = std::count_if(block.words.begin(), block.words.end(),
                                     [](const Word& word) { return word.kind == Word::Kind::kNumber; });
  if (numbers != (numbered ? 1 : 0)) {
    reporter_.report(CheckKind::kBadValue, block.place,
                     fmt::format("{} with {} numbers", blockKindName(rule.kind), numbers));
  }
  if (!block.directive.empty() && rule.directives.find(fmt::format("{} ", block.directive)) == std::string_view::npos) {
    reporter_.report(CheckKind::kUnknownKeyword, block.place,
                     fmt::format("{} is not known before {}", block.directive, blockKindName(rule.kind)));
  }
}

void Checker::enter(const Block& block, const OpenBlock& open) {
  switch (open.kind) {
    case BlockKind::kGroup:
      groups_.push_back({std::string(block.name())});
      ++reporter_.result().groups;
      break;
    case BlockKind::kGeometry:
      if (inGeometry_) break;
      inGeometry_ = true;
      mesh_ = {};
      nurbs_ = {};
      mesh_.place = nurbs_.place = block.place;
      if ((open.vocabulary == Vocabulary::kTriangles || open.vocabulary == Vocabulary::kNurbs) && !groups_.empty()) {
        groups_.back().holdsGeometry = true;
      }
      break;
    case BlockKind::kAnimation:
      matrices_ = timestamps_ = {};
      break;
    case BlockKind::kMaterial:
      materials_.emplace(block.name());
      break;
    case BlockKind::kShader:
      if (!open_.empty()) open_.back().hasShader = true;
      break;
    default:
      break;
  }
}

bool Checker::checkNames(std::span<const Word> words, const Place& place) {
  for (const Word& word : words) {
    const char* fault = nullptr;
    if (isBadHex(word)) fault = "a name or bytes in hexadecimal form with other letters";
    if (hasStrangeBytes(word)) fault = "a name between quotes with bytes that only the hexadecimal form may hold";
    if (!fault) continue;
    reporter_.report(CheckKind::kBadName, place, fault);
    return false;
  }
  return true;
}

void Checker::closeBlock(const BlockEnd& end) {
  const OpenBlock open = open_.back();
  const bool whole = !open.damaged && !end.missing;
  switch (open.kind) {
    case BlockKind::kGroup:
      closeGroup();
      break;
    case BlockKind::kGeometry:
      if (whole) closeGeometry(open);
      break;
    case BlockKind::kAnimation:
      if (whole) closeAnimation(open);
      break;
    case BlockKind::kLoad:
      if (whole && open.vocabulary == Vocabulary::kImport) script_.closeOptions(open.place);
      break;
    case BlockKind::kMaterial:
      if (whole && !open.hasShader && !open.changesOther) {
        reporter_.report(CheckKind::kMaterialWithoutShader, open.place, "a material without a shader");
      }
      break;
    default:
      break;
  }
  open_.pop_back();
  reporter_.closeBlock();
  inGeometry_ = inGeometry_ && std::any_of(open_.begin(), open_.end(),
                                           [](const OpenBlock& block) { return block.kind == BlockKind::kGeometry; });
  // A parameter's block that is damaged leaves its parent unsure, too.
  if (open.damaged && open.kind == BlockKind::kUnknown && !open_.empty()) open_.back().damaged = true;
  if (!inGeometry_) reporter_.passedUntil(end.place.offset);
}

void Checker::closeGroup() {
  const OpenGroup group = std::move(groups_.back());
  groups_.pop_back();
  if (group.holdsGeometry) sources_.insert(group.name);
  if (!groups_.empty() && group.materialGroup && group.holdsGeometry) groups_.back().holdsGeometry = true;
}

void Checker::checkMissing(const OpenBlock& open) {
  const auto rules = parameterRules(open.vocabulary);
  std::string missing;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (!rules[i].required || (open.seen >> i & 1U) != 0) continue;
    missing += fmt::format("{}\"{}\"", missing.empty() ? "" : ", ", rules[i].name);
  }
  if (!missing.empty()) reporter_.report(CheckKind::kMissingParameter, open.place, "without " + missing);
}

void Checker::closeGeometry(const OpenBlock& open) {
  constexpr std::uint32_t kSurfaceParameters = (1U << 9U) - 1;  // the first nine of an exact surface
  switch (open.vocabulary) {
    case Vocabulary::kTriangles:
      checkMissing(open);
      ++reporter_.result().meshes;
      reporter_.result().triangles += checkMesh(mesh_, reporter_);
      break;
    case Vocabulary::kNurbs:
      ++reporter_.result().surfaces;
      if ((open.seen & kSurfaceParameters) == 0) {
        reporter_.report(CheckKind::kEmptySurface, open.place, "an exact surface without its parameters");
      } else {
        checkMissing(open);
      }
      checkNurbs(nurbs_, reporter_);
      break;
    case Vocabulary::kInstance:
      checkMissing(open);
      break;
    default:
      break;
  }
}

void Checker::closeAnimation(const OpenBlock& open) {
  if (open.vocabulary != Vocabulary::kAnimation) return;
  checkMissing(open);
  if (!matrices_.given || !matrices_.usable || !matrices_.finite) return;
  const std::size_t matrices = matrices_.count / 16;
  if (matrices_.count % 16 != 0) {
    reporter_.report(CheckKind::kWrongCount, matrices_.place,
                     fmt::format("\"matrices\" has {} values, no multiple of 16", matrices_.count));
  }
  if (timestamps_.given && timestamps_.usable && timestamps_.count != matrices) {
    reporter_.report(CheckKind::kAnimationLengths, open.place,
                     fmt::format("{} matrices with {} timestamps", matrices, timestamps_.count));
  }
  NumberCursor cursor(matrices_.view);
  std::size_t bent = 0;
  for (std::size_t i = 0; i < matrices; ++i) {
    MatrixValues matrix;
    for (double& value : matrix) value = cursor.next().value_or(0);
    if (!isRigid(matrix)) ++bent;
  }
  if (bent > 0) {
    reporter_.report(CheckKind::kNotRigid, matrices_.place,
                     fmt::format("{} of {} matrices scale, shear or mirror", bent, matrices));
  }
}

void Checker::parameter(const Parameter& parameter) {
  if (!inGeometry_) reporter_.passedUntil(parameter.place.offset);
  if (open_.empty()) return;  // the reader has told
  if (!checkNames(parameter.words, parameter.place)) {
    open_.back().damaged = true;
    return;
  }
  if (!parameter.quoted && (parameter.name.starts_with("xX") || parameter.name.starts_with("bX"))) {
    reporter_.report(CheckKind::kBadName, parameter.place, "a name in hexadecimal form with other letters");
    return;
  }
  OpenBlock& open = open_.back();
  if (open.kind == BlockKind::kUnknown) return;
  if (open.vocabulary == Vocabulary::kNone) {
    reporter_.report(CheckKind::kUnknownKeyword, parameter.place,
                     fmt::format("\"{}\" is nothing that {} has", parameter.name, blockKindName(open.kind)));
  } else if (open.vocabulary == Vocabulary::kFree) {
    checkFinite(parameter.words, parameter.place);
    if (parameter.array && parameter.array->packed()) checkArray(parameter, 0, true);
  } else {
    knownParameter(parameter, open);
  }
}

void Checker::knownParameter(const Parameter& parameter, OpenBlock& open) {
  const ParameterRule* rule = findParameterRule(open.vocabulary, parameter.name);
  if (!rule) {
    const CheckKind kind = open.kind == BlockKind::kCamera ? CheckKind::kUnknownKeyword : CheckKind::kUnknownParameter;
    reporter_.report(kind, parameter.place,
                     fmt::format("\"{}\" is nothing that this {} has", parameter.name,
                                 blockKindName(open.kind).substr(blockKindName(open.kind).find(' ') + 1)));
    return;
  }
  if (rule->quoted != parameter.quoted) {
    reporter_.report(CheckKind::kUnknownKeyword, parameter.place,
                     fmt::format("{} stands {} quotes", parameter.name, rule->quoted ? "without" : "in"));
  }
  const std::uint32_t bit = 1U << static_cast<unsigned>(rule - parameterRules(open.vocabulary).data());
  if ((open.seen & bit) != 0) {
    reporter_.report(CheckKind::kRepeatedParameter, parameter.place,
                     fmt::format("\"{}\" for the second time", parameter.name));
    return;
  }
  open.seen |= bit;
  if (open.vocabulary == Vocabulary::kImport) script_.option(parameter.name, parameter.place);
  if (!isArray(rule->shape)) {
    checkWords(parameter, *rule);
    keepValue(open.vocabulary, parameter);
  } else if (parameter.array) {
    keepArray(open.vocabulary, rule->name, checkArray(parameter, arrayTag(rule->shape), false));
  } else {
    reporter_.report(CheckKind::kBadValue, parameter.place,
                     fmt::format("\"{}\" is not {}", parameter.name, shapeName(rule->shape)));
  }
}

void Checker::checkWords(const Parameter& parameter, const ParameterRule& rule) {
  if (parameter.array || !fits(rule.shape, parameter.words)) {
    reporter_.report(CheckKind::kBadValue, parameter.place,
                     fmt::format("\"{}\" is not {}", parameter.name, shapeName(rule.shape)));
    return;
  }
  checkFinite(parameter.words, parameter.place);
}

void Checker::checkFinite(std::span<const Word> words, const Place& place) {
  for (const Word& word : words) {
    double value = 0;
    if (word.kind != Word::Kind::kNumber) continue;
    std::from_chars(word.text.data(), word.text.data() + word.text.size(), value);
    if (std::isfinite(value)) continue;
    const auto before = static_cast<std::size_t>(word.source.data() - reporter_.bytes().data());
    reporter_.report(CheckKind::kNotFinite, {before, place.line}, fmt::format("the number {}", word.text));
    return;
  }
}

CheckedArray Checker::checkArray(const Parameter& parameter, char tag, bool anyTag) {
  CheckedArray array;
  array.view = *parameter.array;
  array.place = parameter.place;
  array.given = true;
  if (array.view.packed() && !anyTag && array.view.tag() != tag) {
    array.usable = false;
    const std::string wanted = tag == 0 ? "numbers as text" : fmt::format("tag '{}'", tag);
    reporter_.report(CheckKind::kWrongTag, parameter.place,
                     fmt::format("\"{}\" has tag '{}' and not {}", parameter.name, array.view.tag(), wanted));
    return array;
  }
  const ArrayFacts facts = scanArray(array.view, tag == 'i', reporter_);
  array.count = facts.count;
  array.finite = facts.notFinite == 0;
  if (facts.notNumbers > 0) {
    array.usable = false;
    reporter_.report(CheckKind::kBadValue, reporter_.placeOf(array.view, parameter.place, facts.firstNotNumber),
                     fmt::format("{} of {} values in \"{}\" are no {}", facts.notNumbers, facts.count, parameter.name,
                                 tag == 'i' ? "integers" : "numbers"));
  }
  if (facts.notFinite > 0) {
    if (tag == 'i') array.usable = false;
    reporter_.report(
        CheckKind::kNotFinite, reporter_.placeOf(array.view, parameter.place, facts.firstNotFinite),
        fmt::format("{} of {} values in \"{}\" are not finite", facts.notFinite, facts.count, parameter.name));
  }
  return array;
}

void Checker::keepArray(Vocabulary vocabulary, std::string_view name, const CheckedArray& array) {
  using Entry = std::pair<std::string_view, CheckedArray*>;
  const auto keep = [&](std::initializer_list<Entry> entries) {
    for (const auto& [entryName, kept] : entries) {
      if (entryName == name) *kept = array;
    }
  };
  if (vocabulary == Vocabulary::kTriangles) {
    keep({{"vertices", &mesh_.vertices},
          {"normals", &mesh_.normals},
          {"uv_tex", &mesh_.uvs},
          {"triangles", &mesh_.triangles}});
  } else if (vocabulary == Vocabulary::kNurbs) {
    keep({{"uknot", &nurbs_.uknot},
          {"vknot", &nurbs_.vknot},
          {"Pw", &nurbs_.controlPoints},
          {"trim_nedges", &nurbs_.trimEdges},
          {"trim_inside", &nurbs_.trimInside},
          {"edge_order", &nurbs_.edgeOrder},
          {"edge_nknots", &nurbs_.edgeKnotCount},
          {"edge_min", &nurbs_.edgeMin},
          {"edge_max", &nurbs_.edgeMax},
          {"edge_knot", &nurbs_.edgeKnots},
          {"edge_uvw", &nurbs_.edgePoints}});
  } else if (vocabulary == Vocabulary::kAnimation) {
    keep({{"matrices", &matrices_}, {"timestamps", &timestamps_}});
  }
}

void Checker::keepValue(Vocabulary vocabulary, const Parameter& parameter) {
  if (vocabulary == Vocabulary::kInstance && parameter.name == "source") checkSource(parameter);
  if (vocabulary != Vocabulary::kNurbs) return;
  const std::optional<double> number = parameter.number();
  const CheckedNumber value{number && std::isfinite(*number) ? number : std::nullopt, parameter.place};
  using Entry = std::pair<std::string_view, CheckedNumber*>;
  for (const auto& [name, kept] :
       {Entry{"umin", &nurbs_.umin}, Entry{"umax", &nurbs_.umax}, Entry{"vmin", &nurbs_.vmin},
        Entry{"vmax", &nurbs_.vmax}, Entry{"uorder", &nurbs_.uorder}, Entry{"vorder", &nurbs_.vorder}}) {
    if (name == parameter.name) *kept = value;
  }
  const auto dropUnlessInteger = [](CheckedNumber& order) {
    if (order.value && !isInteger(*order.value)) order.value.reset();
  };
  dropUnlessInteger(nurbs_.uorder);
  dropUnlessInteger(nurbs_.vorder);
}

void Checker::checkSource(const Parameter& parameter) {
  const auto name = parameter.string();
  if (!name || sources_.contains(std::string(*name))) return;
  reporter_.report(CheckKind::kUnknownSource, parameter.place,
                   fmt::format("no group \"{}\" with geometry ends before", *name));
}

void Checker::line(const Line& line) {
  if (!inGeometry_) reporter_.passedUntil(line.place.offset);
  const LineRule* rule = findLineRule(line.keyword);
  const BlockKind around = parent();
  if (!rule || around == BlockKind::kUnknown || !checkNames(line.words, line.place)) return;
  if (!allows(rule->parents, around)) {
    reporter_.report(CheckKind::kMisplacedLine, line.place,
                     fmt::format("\"{}\" does not belong into {}", line.keyword, blockKindName(around)));
    return;
  }
  if (!fits(rule->shape, line.words)) {
    reporter_.report(CheckKind::kBadValue, line.place,
                     fmt::format("\"{}\" needs {}", line.keyword, shapeName(rule->shape)));
    return;
  }
  checkFinite(line.words, line.place);
  double value = 0;
  if (line.keyword == "flags" && around == BlockKind::kGroup && line.numbers({&value, 1})) {
    groups_.back().materialGroup = (toGroupFlags(value) & kMaterialGroupFlag) != 0;
  } else if (line.keyword == "material" && !materials_.contains(std::string(line.name()))) {
    reporter_.report(CheckKind::kUnknownMaterial, line.place,
                     fmt::format("no material \"{}\" stands before", line.name()));
  } else if (around == BlockKind::kGroup && line.keyword.ends_with("transform")) {
    placement(line);
  }
}

void Checker::placement(const Line& line) {
  MatrixValues matrix;
  if (!line.numbers(matrix)) return;
  const bool finite = std::all_of(matrix.begin(), matrix.end(), [](double value) { return std::isfinite(value); });
  if (finite && !isRigid(matrix)) {
    reporter_.report(CheckKind::kNotRigid, line.place, "a placement that scales, shears or mirrors");
  }
}

void Checker::fault(const Fault& fault) {
  reporter_.report(CheckKind::kSyntax, fault.place, fault.what);
  if (!open_.empty()) open_.back().damaged = true;
}

CheckReport Checker::finish(std::size_t readerFaults) {
  script_.end();
  CheckReport report = std::move(reporter_.result());
  report.counts[static_cast<std::size_t>(CheckKind::kSyntax)] = readerFaults;
  std::stable_sort(report.findings.begin(), report.findings.end(),
                   [](const Finding& a, const Finding& b) { return a.place.offset < b.place.offset; });
  return report;
}

struct KindEntry {
  std::string_view name;
  Severity severity;
};

constexpr std::array<KindEntry, kCheckKinds> kKinds = {{
    {"syntax", Severity::kFault},
    {"unknown-block", Severity::kFault},
    {"unknown-keyword", Severity::kFault},
    {"misplaced-block", Severity::kFault},
    {"misplaced-line", Severity::kFault},
    {"no-scene", Severity::kFault},
    {"header-order", Severity::kFault},
    {"option-order", Severity::kFault},
    {"missing-option", Severity::kWarning},
    {"unknown-parameter", Severity::kWarning},
    {"repeated-parameter", Severity::kFault},
    {"missing-parameter", Severity::kFault},
    {"bad-value", Severity::kFault},
    {"bad-name", Severity::kFault},
    {"wrong-tag", Severity::kFault},
    {"wrong-count", Severity::kFault},
    {"not-finite", Severity::kFault},
    {"index-out-of-range", Severity::kFault},
    {"uneven-counts", Severity::kWarning},
    {"degenerate-triangles", Severity::kNote},
    {"facets-against-normals", Severity::kWarning},
    {"unknown-source", Severity::kFault},
    {"unknown-material", Severity::kWarning},
    {"material-without-shader", Severity::kFault},
    {"empty-surface", Severity::kWarning},
    {"decreasing-knots", Severity::kFault},
    {"control-point-count", Severity::kFault},
    {"parameter-range", Severity::kFault},
    {"trim-counts", Severity::kFault},
    {"open-trim", Severity::kFault},
    {"animation-lengths", Severity::kNote},
    {"not-rigid", Severity::kWarning},
}};

}  // namespace

std::string_view checkKindName(CheckKind kind) { return kKinds[static_cast<std::size_t>(kind)].name; }
Severity checkSeverity(CheckKind kind) { return kKinds[static_cast<std::size_t>(kind)].severity; }

std::string_view severityName(Severity severity) {
  if (severity == Severity::kFault) return "fault";
  return severity == Severity::kWarning ? "warning" : "note";
}

std::uint64_t CheckReport::count(Severity severity) const {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < kCheckKinds; ++i) {
    if (kKinds[i].severity == severity) sum += counts[i];
  }
  return sum;
}

CheckReport checkPackage(std::string_view bytes, const CheckLimits& limits, const PassedBytes& passed) {
  Checker checker(bytes, limits, passed);
  return checker.finish(readPackage(bytes, checker, limits.reading));
}

}  // namespace rpk
