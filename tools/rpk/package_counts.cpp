#include "tools/rpk/package_counts.h"

#include <unordered_map>
#include <unordered_set>

#include "tools/rpk/group_flags.h"

namespace rpk {
namespace {

enum class Kind { kOther, kGroup, kCamera, kMaterial, kTriangles, kNurbs, kInstance, kAnimation };

Kind geometryKind(std::string_view type) {
  if (type == "triangles") return Kind::kTriangles;
  if (type == "nurbs") return Kind::kNurbs;
  if (type == "instance") return Kind::kInstance;
  return Kind::kOther;
}

Kind kindOf(const Block& block) {
  if (block.keyword == "group") return Kind::kGroup;
  if (block.keyword == "camera") return Kind::kCamera;
  if (block.keyword == "material") return Kind::kMaterial;
  if (block.keyword == "geometry") return geometryKind(block.name());
  if (block.keyword == "animation") return Kind::kAnimation;
  return Kind::kOther;
}

class Counter : public PackageVisitor {
 public:
  PackageCounts counts;

  void openBlock(const Block& block) override {
    const Kind kind = kindOf(block);
    open_.push_back(kind);
    switch (kind) {
      case Kind::kGroup:
        ++counts.groups;
        groups_.push_back({std::string(block.name())});
        break;
      case Kind::kCamera:
        ++counts.cameras;
        break;
      case Kind::kMaterial:
        materials_.emplace(block.name());
        counts.materials = materials_.size();
        break;
      case Kind::kNurbs:
        ++counts.nurbsObjects;
        if (!groups_.empty()) groups_.back().holdsGeometry = true;
        break;
      case Kind::kTriangles:
        if (!groups_.empty()) groups_.back().holdsGeometry = true;
        break;
      case Kind::kInstance:
        ++counts.references;
        break;
      case Kind::kAnimation:
        ++counts.animations;
        break;
      case Kind::kOther:
        if (block.keyword == "object") ++counts.objects;
        break;
    }
  }

  void closeBlock(const BlockEnd&) override {
    if (open_.back() == Kind::kGroup) closeGroup();
    open_.pop_back();
  }

  void line(const Line& line) override {
    double value = 0;
    if (line.keyword == "flags" && !open_.empty() && open_.back() == Kind::kGroup && line.numbers({&value, 1})) {
      groups_.back().flags = toGroupFlags(value);
    }
  }

  void parameter(const Parameter& parameter) override {
    const Kind kind = open_.empty() ? Kind::kOther : open_.back();
    if (parameter.array) countArray(kind, parameter.name, *parameter.array);
    if (kind == Kind::kInstance && parameter.name == "source") countReference(parameter.string().value_or(""));
  }

  void fault(const Fault& fault) override { counts.faults.push_back(fault); }

 private:
  struct OpenGroup {
    std::string name;
    std::uint32_t flags = 0;
    std::uint64_t triangles = 0;  // held directly or by inner groups
    bool holdsGeometry = false;
  };

  void closeGroup() {
    const OpenGroup group = std::move(groups_.back());
    groups_.pop_back();
    const bool inner = (group.flags & kMaterialGroupFlag) != 0;
    if (group.holdsGeometry) triangles_[group.name] = group.triangles;
    if (groups_.empty()) return;
    if (inner) {
      groups_.back().triangles += group.triangles;
      groups_.back().holdsGeometry = groups_.back().holdsGeometry || group.holdsGeometry;
    } else if ((group.flags & kAssemblyGroupFlag) == 0) {
      ++counts.occurrences;
    }
  }

  void countArray(Kind kind, std::string_view name, const ArrayView& array) {
    const std::uint64_t size = array.bytes().size();
    if (kind == Kind::kTriangles) {
      counts.bytes.mesh += size;
      if (name == "vertices") counts.vertices += array.count() / 3;
      if (name == "triangles") countTriangles(array.count() / 3);
    } else if (kind == Kind::kNurbs) {
      counts.bytes.nurbs += size;
    } else if (kind == Kind::kAnimation) {
      counts.bytes.animation += size;
    }
  }

  void countTriangles(std::uint64_t count) {
    counts.triangles += count;
    counts.trianglesPlaced += count;
    if (!groups_.empty()) groups_.back().triangles += count;
  }

  void countReference(std::string_view source) {
    const auto found = triangles_.find(std::string(source));
    if (found != triangles_.end()) counts.trianglesPlaced += found->second;
  }

  std::vector<Kind> open_;
  std::vector<OpenGroup> groups_;
  std::unordered_set<std::string> materials_;
  std::unordered_map<std::string, std::uint64_t> triangles_;  // of the last group of each name with geometry
};

}  // namespace

PackageCounts countPackage(std::string_view bytes, const ReadLimits& limits) {
  Counter counter;
  counter.counts.faultCount = readPackage(bytes, counter, limits);
  ByteCounts& sizes = counter.counts.bytes;
  sizes.text = bytes.size() - sizes.mesh - sizes.nurbs - sizes.animation;
  return std::move(counter.counts);
}

}  // namespace rpk
