#include "standin/step/overlay_target.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cwchar>
#include <cwctype>

#include "standin/windows/code_page.h"

namespace standin {

namespace {

std::wstring folded(std::wstring text) {
  for (wchar_t& c : text) c = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
  return text;
}

void collect(Model& model, std::vector<Model*>& models) {
  if (std::find(models.begin(), models.end(), &model) != models.end()) return;
  models.push_back(&model);
  for (Feature& feature : model.features) {
    if (feature.component != nullptr) collect(*feature.component, models);
  }
}

// One name of a path with what stands behind its ":".
struct Step {
  std::string name;
  std::optional<std::string> occurrence;
};

std::vector<Step> split(const std::string& path, const JsonNode& node) {
  std::vector<Step> steps(1);
  for (std::size_t i = 0; i < path.size(); ++i) {
    std::string& part = steps.back().occurrence ? *steps.back().occurrence : steps.back().name;
    if (path[i] == '\\' && i + 1 < path.size()) {
      part.push_back(path[++i]);
    } else if (path[i] == '/') {
      steps.emplace_back();
    } else if (path[i] == ':' && !steps.back().occurrence) {
      steps.back().occurrence.emplace();
    } else {
      part.push_back(path[i]);
    }
  }
  for (const Step& step : steps) {
    if (step.name.empty()) node.fail("a name of the path \"" + path + "\" is empty");
  }
  return steps;
}

// The components that a step names among those with its name.
std::vector<Feature*> choose(const std::vector<Feature*>& named, const Step& step, const JsonNode& node) {
  const std::string count = std::to_string(named.size());
  if (!step.occurrence) {
    if (named.size() == 1) return named;
    node.fail("there are " + count + " components \"" + step.name + "\": say which one by \":1\" to \":" + count +
              "\", or \":*\" for all");
  }
  if (*step.occurrence == "*") return named;
  const bool digits =
      !step.occurrence->empty() && step.occurrence->size() < 9 &&
      std::all_of(step.occurrence->begin(), step.occurrence->end(), [](char c) { return c >= '0' && c <= '9'; });
  const std::size_t n = digits ? std::stoul(*step.occurrence) : 0;
  if (n < 1 || n > named.size()) {
    node.fail("\"" + step.name + ":" + *step.occurrence + "\": there are " + count + " components of this name");
  }
  return {named[n - 1]};
}

double dot(const Point& left, const Point& right) {
  return left[0] * right[0] + left[1] * right[1] + left[2] * right[2];
}

Point cross(const Point& left, const Point& right) {
  return {left[1] * right[2] - left[2] * right[1], left[2] * right[0] - left[0] * right[2],
          left[0] * right[1] - left[1] * right[0]};
}

Point scaled(const Point& vector, double factor) {
  return {vector[0] * factor, vector[1] * factor, vector[2] * factor};
}

// With row vectors the columns are the view's axes: to the right, up, and towards the viewer. Nothing when the
// direction is zero or parallel to `up`.
std::optional<Matrix> lookAlong(const Point& direction, const Point& up) {
  const double length = std::sqrt(dot(direction, direction));
  if (!(length > 0.0)) return std::nullopt;
  const Point towards = scaled(direction, -1.0 / length);
  Point right = cross(up, towards);
  const double width = std::sqrt(dot(right, right));
  if (!(width > 1e-9 * std::sqrt(dot(up, up)))) return std::nullopt;
  right = scaled(right, 1.0 / width);
  const Point upright = cross(towards, right);
  Matrix matrix = kIdentity;
  for (std::size_t row = 0; row < 3; ++row) {
    matrix[row * 4] = right[row];
    matrix[row * 4 + 1] = upright[row];
    matrix[row * 4 + 2] = towards[row];
  }
  return matrix;
}

Point pointOf(const JsonNode& node) {
  const std::vector<double> numbers = node.numbers(3);
  return {numbers[0], numbers[1], numbers[2]};
}

// A rotation with a uniform scale and a translation.
Matrix checkedMatrix(const JsonNode& node) {
  const std::vector<double> numbers = node.numbers(16);
  Matrix matrix{};
  std::copy(numbers.begin(), numbers.end(), matrix.begin());
  std::array<Point, 3> rows{};
  for (std::size_t row = 0; row < 3; ++row) rows[row] = {matrix[row * 4], matrix[row * 4 + 1], matrix[row * 4 + 2]};
  const double square = dot(rows[0], rows[0]);
  bool fine = square > 1e-18 && dot(cross(rows[0], rows[1]), rows[2]) > 0.0;
  for (std::size_t row = 0; row < 3; ++row) {
    const Point& next = rows[(row + 1) % 3];
    fine = fine && std::abs(dot(next, next) - square) < 1e-6 * square && std::abs(dot(rows[row], next)) < 1e-6 * square;
    fine = fine && matrix[row * 4 + 3] == 0.0;
  }
  if (!fine || matrix[15] != 1.0) node.fail("is no rotation with a uniform scale");
  return matrix;
}

}  // namespace

OverlayNames::OverlayNames(Model& top) : top_(top) { collect(top, models_); }

Model* OverlayNames::find(const std::wstring& name, ProMdlType type) const {
  for (Model* model : models_) {
    if (model->type == type && folded(model->name) == folded(name)) return model;
  }
  return nullptr;
}

Model& OverlayNames::part(const JsonNode& node) const {
  if (Model* found = find(node.wide(), PRO_MDL_PART)) return *found;
  node.fail("there is no part \"" + node.text() + "\"");
}

Model& OverlayNames::model(const JsonNode& node) const {
  for (const ProMdlType type : {PRO_MDL_PART, PRO_MDL_ASSEMBLY}) {
    if (Model* found = find(node.wide(), type)) return *found;
  }
  node.fail("there is no model \"" + node.text() + "\"");
}

std::vector<ComponentTarget> OverlayNames::components(const std::string& path, const JsonNode& node) const {
  std::vector<ComponentTarget> targets(1);
  Model* const top = &top_;
  for (const Step& step : split(path, node)) {
    std::vector<ComponentTarget> deeper;
    const std::wstring name = folded(wideFromUtf8(step.name));
    for (const ComponentTarget& target : targets) {
      Model* const owner = target.feature == nullptr ? top : target.feature->component;
      std::vector<Feature*> named;
      for (Feature& feature : owner->features) {
        if (feature.component != nullptr && folded(feature.component->name) == name) named.push_back(&feature);
      }
      if (named.empty()) {
        node.fail("there is no component \"" + step.name + "\" in \"" + utf8FromWide(owner->name) + "\"");
      }
      for (Feature* feature : choose(named, step, node)) {
        deeper.push_back({owner, feature, target.path});
        deeper.back().path.push_back(feature->id);
      }
    }
    targets = std::move(deeper);
  }
  return targets;
}

std::optional<Matrix> standardView(const std::string& name) {
  struct Standard {
    const char* name;
    Point direction, up;
  };
  constexpr std::array<Standard, 7> kStandards = {{{"front", {0, 0, -1}, {0, 1, 0}},
                                                   {"back", {0, 0, 1}, {0, 1, 0}},
                                                   {"top", {0, -1, 0}, {0, 0, -1}},
                                                   {"bottom", {0, 1, 0}, {0, 0, 1}},
                                                   {"left", {1, 0, 0}, {0, 1, 0}},
                                                   {"right", {-1, 0, 0}, {0, 1, 0}},
                                                   {"iso", {-1, -1, -1}, {0, 1, 0}}}};
  for (const Standard& standard : kStandards) {
    if (name == standard.name) return lookAlong(standard.direction, standard.up);
  }
  return std::nullopt;
}

Matrix viewMatrix(const JsonNode& node) {
  const std::optional<JsonNode> standard = node.find("standard");
  const std::optional<JsonNode> matrix = node.find("matrix");
  const std::optional<JsonNode> direction = node.find("direction");
  const std::optional<JsonNode> up = node.find("up");
  if (int{standard.has_value()} + int{matrix.has_value()} + int{direction.has_value()} != 1 || (up && !direction)) {
    node.fail("needs one of \"standard\", \"matrix\" or \"direction\" with \"up\"");
  }
  if (standard) {
    if (const std::optional<Matrix> known = standardView(standard->text())) return *known;
    standard->fail("must be front, back, top, bottom, left, right or iso");
  }
  if (matrix) return checkedMatrix(*matrix);
  const std::optional<Matrix> found = lookAlong(pointOf(*direction), up ? pointOf(*up) : Point{0.0, 1.0, 0.0});
  if (!found) node.fail("the direction is zero or parallel to the up direction");
  return *found;
}

Point colorFrom(const JsonNode& node) {
  if (!node.isText()) {
    const Point color = pointOf(node);
    for (const double value : color) {
      if (!(value >= 0.0 && value <= 1.0)) node.fail("must hold numbers from 0 to 1");
    }
    return color;
  }
  const std::string text = node.text();
  const bool digits = text.size() == 7 && text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
  if (!digits || text[0] != '#') node.fail("must be \"#rrggbb\" or three numbers");
  Point color{};
  for (std::size_t i = 0; i < 3; ++i) color[i] = std::stoi(text.substr(1 + 2 * i, 2), nullptr, 16) / 255.0;
  return color;
}

std::wstring colorName(const Point& color) {
  std::array<wchar_t, 16> name{};
  std::array<int, 3> bytes{};
  for (std::size_t i = 0; i < 3; ++i) bytes[i] = static_cast<int>(std::lround(std::clamp(color[i], 0.0, 1.0) * 255.0));
  std::swprintf(name.data(), name.size(), L"color %02x%02x%02x", bytes[0], bytes[1], bytes[2]);
  return name.data();
}

}  // namespace standin
