#include "tools/rpk/report/info_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <vector>

#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/group_tree.h"
#include "tools/rpk/report/placement_text.h"
#include "tools/rpk/report/text_table.h"

namespace rpk {
namespace {

constexpr std::size_t kPageWidth = 120;
constexpr std::size_t kLabelWidth = 16;
constexpr std::size_t kDeepestIndentation = 40;
using Align = TextTable::Align;

// A name that is empty would look like a gap.
std::string nameText(std::string_view name) { return name.empty() ? "\"\"" : displayText(name); }

// The name of the length unit with so many to the metre, or empty.
std::string_view unitName(double unitsPerMetre) {
  struct Unit {
    double perMetre;
    std::string_view name;
  };
  constexpr auto kUnits = std::to_array<Unit>({{1000, "millimetres"},
                                               {100, "centimetres"},
                                               {39.3701, "inches"},
                                               {3.28084, "feet"},
                                               {39370.1, "mils"},
                                               {1e6, "microns"}});
  for (const Unit& unit : kUnits) {
    if (std::abs(unitsPerMetre - unit.perMetre) < unit.perMetre * 1e-5) return unit.name;
  }
  return {};
}

class InfoWriter {
 public:
  explicit InfoWriter(const PackageInfo& info) : info_(info) {}

  std::string text;

  void writeHead(std::string_view file) {
    text += displayText(file) + "\n\n";
    std::vector<std::string> headers;
    for (const std::string& header : info_.scene.headers) headers.push_back(displayText(header));
    list("header", headers, "  ");
    std::vector<std::string> modules;
    for (const std::string& module : info_.scene.modules) modules.push_back(nameText(module));
    list("modules", modules, ", ");
    std::vector<std::string> options;
    for (const auto& [name, value] : info_.scene.options) options.push_back(nameText(name) + " " + displayText(value));
    list("options", options, ", ");
    writeUnits();
  }

  void writeNumbers() {
    const PackageCounts& counts = info_.counts;
    text += '\n';
    std::vector<std::string> groups = {counted(counts.groups, "group", "groups")};
    std::uint64_t empty = 0;
    for (const Group* group : info_.scene.allGroups()) empty += groupKind(*group) == GroupKind::kEmpty ? 1 : 0;
    if (info_.assemblies > 0) groups.push_back(counted(info_.assemblies, "sub-assembly", "sub-assemblies"));
    groups.push_back(counted(counts.occurrences, "placed part", "placed parts"));
    if (info_.materialGroups > 0) groups.push_back(grouped(info_.materialGroups) + " of one material");
    if (empty > 0) groups.push_back(grouped(empty) + " empty");
    list("groups", groups, ", ");
    list("objects",
         {counted(info_.meshes, "mesh", "meshes"), counted(counts.references, "reference", "references"),
          counted(counts.nurbsObjects, "exact surface", "exact surfaces")},
         ", ");
    list("triangles", {grouped(counts.triangles) + " written", grouped(counts.trianglesPlaced) + " placed"}, ", ");
    entry("vertices", grouped(counts.vertices) + " written");
    if (info_.trims.trimmed > 0) {
      list("trims",
           {counted(info_.trims.trimmed, "surface", "surfaces") + " trimmed",
            counted(info_.trims.loops, "loop", "loops"), counted(info_.trims.curves, "curve", "curves")},
           ", ");
    }
    writeBox();
    writeBytes();
  }

  void writeCameras() {
    TextTable table({{"name"}, {"projection"}, {"fov", Align::kRight}, {"looks along"}, {"up"}}, 0);
    for (const Camera& camera : info_.scene.cameras) {
      const auto value = [&](const char* name) {
        const auto found = camera.values.find(name);
        return found == camera.values.end() ? std::string() : displayText(found->second);
      };
      table.add({nameText(camera.name), value("projection"), value("fov"), axisText(camera, "direction"),
                 axisText(camera, "up")});
    }
    section("cameras", info_.scene.cameras.size(), table);
  }

  void writeMaterials() {
    TextTable table({{"colour"}, {"objects", Align::kRight}, {"name"}, {"shader"}, {"texture"}}, 2);
    for (const MaterialUse& use : info_.materials) {
      const Material& material = use.material;
      table.add({material.colour ? colourText(*material.colour) : "", grouped(use.objects), nameText(material.name),
                 displayText(material.surface.type), shortened(displayText(material.texture), kPageWidth / 2)});
    }
    section("materials", info_.materials.size(), table);
  }

  void writeAnimations() {
    TextTable table({{"frames", Align::kRight}, {"times", Align::kRight}, {"seconds", Align::kRight}, {"group"}}, 3);
    for (const Group* group : info_.animated) {
      for (const Animation& animation : group->animations) {
        const auto duration = animation.values.find("duration");
        table.add({grouped(animation.matrices.size()), grouped(animation.timestamps.size()),
                   duration == animation.values.end() ? std::string() : displayText(duration->second),
                   displayText(groupPath(*group))});
      }
    }
    section("animations", info_.counts.animations, table);
  }

  void writeExact() {
    if (!info_.exact) return;
    TextTable table({{"part"},
                     {"times", Align::kRight},
                     {"surfaces", Align::kRight},
                     {"sound", Align::kRight},
                     {"area", Align::kRight},
                     {"of meshes", Align::kRight},
                     {"difference", Align::kRight}},
                    0);
    const auto add = [&](std::string name, std::string times, const ExactSums& sums) {
      table.add({std::move(name), std::move(times), grouped(sums.surfaces), grouped(sums.sound), areaText(sums.area),
                 areaText(sums.meshArea), excessText(sums)});
    };
    for (const ExactPart& part : *info_.exact) {
      add(exactName(part), part.places > 1 ? "x " + grouped(part.places) : "", part.sums);
    }
    const ExactSums sums = sumOf(*info_.exact);
    if (info_.exact->size() > 1) add("all, each once", "", sums);
    section("exact surfaces", sums.surfaces, table);
    writeUnsound();
  }

  void writeTree(const TreeOptions& options) {
    if (options.depth == 0) return;
    TextTable table({{"name"},
                     {"times", Align::kRight},
                     {"kind"},
                     {"triangles", Align::kRight},
                     {"x", Align::kRight},
                     {"y", Align::kRight},
                     {"z", Align::kRight},
                     {"rotation"}},
                    0);
    for (const TreeRow& row : treeRows(info_, options.depth, options.each)) addRow(table, row);
    section("tree", info_.counts.groups - info_.materialGroups, table);
  }

 private:
  void entry(std::string_view label, std::string_view value) {
    text += fmt::format("{:{}}{}\n", label, kLabelWidth, value);
  }

  // As many items on a line as fit.
  void list(std::string_view label, const std::vector<std::string>& items, std::string_view separator) {
    constexpr std::size_t kRoom = kPageWidth - kLabelWidth;
    std::string line;
    for (std::size_t i = 0; i < items.size(); ++i) {
      const bool last = i + 1 == items.size();
      const std::string item = shortened(items[i], kRoom - 2) + (last ? std::string() : std::string(separator));
      if (!line.empty() && displayWidth(line) + displayWidth(item) > kRoom) {
        entry(label, trimmed(line));
        label = "";
        line.clear();
      }
      line += item;
    }
    entry(label, line.empty() ? "none" : trimmed(line));
  }

  static std::string_view trimmed(std::string_view line) { return line.substr(0, line.find_last_not_of(' ') + 1); }

  void section(std::string_view title, std::uint64_t count, const TextTable& table) {
    text += '\n';
    if (table.empty()) {
      entry(title, count == 0 ? "none" : grouped(count));
      return;
    }
    text += fmt::format("{} ({})\n", title, grouped(count)) + table.text(2, kPageWidth);
  }

  static std::string exactName(const ExactPart& part) {
    return part.group ? nameText(part.group->name) : "outside any group";
  }

  // Areas of models in millimetres have many digits.
  static std::string areaText(double area) {
    constexpr double kShort = 1e5;
    constexpr double kWritable = 1e15;
    const bool isLong = area >= kShort && area < kWritable;
    return isLong ? grouped(static_cast<std::uint64_t>(std::llround(area))) : numberText(area);
  }

  static std::string excessText(const ExactSums& sums) {
    constexpr double kLeast = 1e-4;
    const std::optional<double> percent = sums.meshExcess();
    if (!percent) return {};
    return std::abs(*percent) < kLeast ? "0 %" : fmt::format("{:+.3g} %", *percent);
  }

  void writeUnsound() {
    constexpr std::size_t kMost = 20;
    TextTable table({{"part"}, {"surface", Align::kRight}, {"what"}}, 0);
    std::size_t count = 0;
    for (const ExactPart& part : *info_.exact) {
      for (const UnsoundSurface& surface : part.unsound) {
        if (++count <= kMost) table.add({exactName(part), grouped(surface.number), surface.what});
      }
    }
    if (count == 0) return;
    section("not sound", count, table);
    if (count > kMost) text += fmt::format("  {} more\n", grouped(count - kMost));
  }

  void writeUnits() {
    if (info_.scene.option("meter_scale").empty()) {
      entry("units", "not said; taken as metres");
      return;
    }
    const std::string_view name = unitName(info_.unitsPerMetre);
    entry("units", fmt::format("{} to the metre{}{}{}", numberText(info_.unitsPerMetre), name.empty() ? "" : " (", name,
                               name.empty() ? "" : ")"));
  }

  void writeBox() {
    if (info_.box.box.empty()) {
      entry("box", "nothing is drawn");
      return;
    }
    const Box& box = info_.box.box;
    const Vector size = box.size();
    TextTable table(
        {{"box"}, {"from", Align::kRight}, {"to", Align::kRight}, {"size", Align::kRight}, {"metres", Align::kRight}},
        0);
    for (std::size_t i = 0; i < 3; ++i) {
      table.add({fmt::format("{:>{}}", "xyz"[i], kLabelWidth - 2), numberText(box.low[i]), numberText(box.high[i]),
                 numberText(size[i]), numberText(size[i] / info_.unitsPerMetre)});
    }
    text += '\n' + table.text(0, kPageWidth);
    if (!info_.box.exact) entry("", "at most; there is too much to look at every vertex at each of its places");
  }

  void writeBytes() {
    const ByteCounts& bytes = info_.counts.bytes;
    TextTable table({{"bytes"}, {grouped(info_.fileBytes), Align::kRight}, {"share", Align::kRight}}, 0);
    const auto add = [&](std::string_view what, std::uint64_t count) {
      if (count == 0) return;
      const double share =
          info_.fileBytes == 0 ? 0 : static_cast<double>(count) * 100 / static_cast<double>(info_.fileBytes);
      table.add({fmt::format("  {:{}}", what, kLabelWidth - 4), grouped(count), fmt::format("{:.1f} %", share)});
    };
    add("meshes", bytes.mesh);
    add("exact", bytes.nurbs);
    add("animation", bytes.animation);
    add("text", bytes.text);
    text += '\n' + table.text(0, kPageWidth);
  }

  // A direction of the camera, turned as its transform turns it.
  static std::string axisText(const Camera& camera, const char* name) {
    const auto found = camera.values.find(name);
    if (found == camera.values.end()) return {};
    const std::vector<double> values = ArrayView::textValues(found->second).doubles();
    if (values.size() != 3) return {};
    Matrix turn = camera.transform.value_or(kIdentity);
    turn[12] = turn[13] = turn[14] = 0;
    const Vector axis = transformPoint({values[0], values[1], values[2]}, turn);
    const double length = std::hypot(axis[0], axis[1], axis[2]);
    if (!(length > 0) || !std::isfinite(length)) return {};
    // No minus before a zero.
    const auto rounded = [&](std::size_t i) { return std::round(axis[i] / length * 1000) / 1000 + 0.0; };
    return fmt::format("({:.3g}, {:.3g}, {:.3g})", rounded(0), rounded(1), rounded(2));
  }

  static std::string kindText(const TreeRow& row) {
    const auto parts = std::count_if(row.groups.begin(), row.groups.end(),
                                     [](const Group* group) { return groupKind(*group) == GroupKind::kPart; });
    const auto count = static_cast<std::ptrdiff_t>(row.groups.size());
    if (parts > 0 && parts < count) return "part+refs";
    return std::string(groupKindName(groupKind(*row.groups.front())));
  }

  // One value, or the least and the greatest.
  static std::string rangeText(const TreeRow& row, std::size_t element) {
    double least = row.groups.front()->placement.value_or(kIdentity)[element];
    double greatest = least;
    for (const Group* group : row.groups) {
      const double value = group->placement.value_or(kIdentity)[element];
      least = std::min(least, value);
      greatest = std::max(greatest, value);
    }
    const std::string from = numberText(least);
    const std::string to = numberText(greatest);
    return from == to ? from : from + ".." + to;
  }

  static std::string rotationText(const TreeRow& row) {
    const std::string first = turnText(row.groups.front()->placement.value_or(kIdentity));
    const bool same = std::all_of(row.groups.begin(), row.groups.end(), [&](const Group* group) {
      return turnText(group->placement.value_or(kIdentity)) == first;
    });
    return same ? first : "various";
  }

  void addRow(TextTable& table, const TreeRow& row) {
    const Group& group = *row.groups.front();
    std::string name(std::min(row.level * 2, kDeepestIndentation), ' ');
    name += nameText(group.name);
    if (row.below > 0) name += fmt::format(" ({} below)", grouped(row.below));
    const std::uint64_t triangles = info_.trianglesAt(group);
    table.add({name, row.groups.size() > 1 ? "x " + grouped(row.groups.size()) : "", kindText(row),
               triangles > 0 ? grouped(triangles) : "", rangeText(row, 12), rangeText(row, 13), rangeText(row, 14),
               rotationText(row)});
  }

  const PackageInfo& info_;
};

}  // namespace

std::string infoText(const PackageInfo& info, std::string_view file, const TreeOptions& options) {
  InfoWriter writer(info);
  writer.writeHead(file);
  writer.writeNumbers();
  writer.writeCameras();
  writer.writeMaterials();
  writer.writeAnimations();
  writer.writeExact();
  writer.writeTree(options);
  return std::move(writer.text);
}

}  // namespace rpk
