#include "tools/rpk/scene_summary.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <utility>

namespace rpk {
namespace {

std::string valueOf(const Parameter& parameter) {
  const auto name = parameter.string();
  return std::string(name ? *name : parameter.text);
}

std::optional<Matrix> matrixOf(const Line& line) {
  Matrix matrix{};
  if (!line.numbers(matrix)) return std::nullopt;
  return matrix;
}

std::vector<Matrix> matricesOf(const ArrayView& array) {
  const std::vector<double> values = array.doubles();
  std::vector<Matrix> matrices(values.size() / 16);
  for (std::size_t i = 0; i < matrices.size(); ++i) std::copy_n(values.data() + i * 16, 16, matrices[i].data());
  return matrices;
}

int variantOf(std::string_view header) {
  constexpr std::string_view kBefore = "//---vantor:dal:";
  int variant = 0;
  if (header.starts_with(kBefore)) {
    std::from_chars(header.data() + kBefore.size(), header.data() + header.size(), variant);
  }
  return variant;
}

class SceneBuilder : public PackageVisitor {
 public:
  Scene scene;

  void comment(const Comment& comment) override {
    if (!comment.header()) return;
    scene.headers.emplace_back(comment.text);
    if (const int variant = variantOf(comment.text)) scene.headerVariant = variant;
  }

  void openBlock(const Block& block) override {
    open_.push_back(kindOf(block));
    switch (kind()) {
      case Kind::kGroup:
        openGroup(block);
        break;
      case Kind::kObject:
        object_.emplace();
        object_->name = block.name();
        break;
      case Kind::kGeometry:
        object_->geometryType = block.name();
        break;
      case Kind::kMaterial:
        material_.emplace();
        material_->name = block.name();
        break;
      case Kind::kCamera:
        camera_.emplace();
        camera_->name = block.name();
        break;
      case Kind::kAnimation:
        animation_.emplace();
        animation_->type = block.name(0);
        animation_->name = block.name(1);
        break;
      case Kind::kShader:
        openShader(block);
        break;
      case Kind::kLoad:
        scene.modules.emplace_back(block.name());
        break;
      case Kind::kOther:
        break;
    }
  }

  void closeBlock(const BlockEnd&) override {
    switch (kind()) {
      case Kind::kGroup:
        closeGroup();
        break;
      case Kind::kObject:
        objects().push_back(std::move(*object_));
        object_.reset();
        break;
      case Kind::kMaterial:
        closeMaterial();
        break;
      case Kind::kCamera:
        scene.cameras.push_back(std::move(*camera_));
        camera_.reset();
        break;
      case Kind::kAnimation:
        path_.back()->animations.push_back(std::move(*animation_));
        animation_.reset();
        break;
      case Kind::kShader:
        closeShader();
        break;
      case Kind::kGeometry:
      case Kind::kLoad:
      case Kind::kOther:
        break;
    }
    open_.pop_back();
  }

  void line(const Line& line) override {
    if (line.keyword == "material" && kind() == Kind::kObject && !object_->material) {
      setMaterial(std::string(line.name()));
    } else if (line.keyword == "transform" || line.keyword == "set transform") {
      if (kind() == Kind::kGroup) path_.back()->placement = matrixOf(line);
      if (kind() == Kind::kCamera) camera_->transform = matrixOf(line);
    } else if (line.keyword == "flags" && kind() == Kind::kGroup) {
      double value = 0;
      path_.back()->hasFlags = line.numbers({&value, 1});
      path_.back()->flags = toGroupFlags(value);
    }
  }

  void parameter(const Parameter& parameter) override {
    switch (kind()) {
      case Kind::kLoad:
        scene.options.emplace_back(parameter.name, valueOf(parameter));
        break;
      case Kind::kCamera:
        camera_->values[std::string(parameter.name)] = valueOf(parameter);
        break;
      case Kind::kShader:
        shaders_.back().values[std::string(parameter.name)] = valueOf(parameter);
        break;
      case Kind::kGeometry:
        setGeometry(parameter);
        break;
      case Kind::kAnimation:
        setAnimation(parameter);
        break;
      default:
        break;
    }
  }

  void fault(const Fault& fault) override { scene.faults.push_back(fault); }

 private:
  enum class Kind { kOther, kGroup, kObject, kGeometry, kMaterial, kCamera, kAnimation, kShader, kLoad };

  Kind kind() const { return open_.empty() ? Kind::kOther : open_.back(); }

  // A block counts only where it belongs, so that a damaged nesting never mixes one thing into another: whatever stands
  // in an unknown block is unknown too.
  Kind kindOf(const Block& block) const {
    const Kind outer = kind();
    const std::string_view word = block.keyword;
    if (open_.empty() || outer == Kind::kGroup) {
      if (word == "group") return Kind::kGroup;
      if (word == "object") return Kind::kObject;
      if (word == "camera") return Kind::kCamera;
      if (word == "load") return Kind::kLoad;
      if (word == "animation" && outer == Kind::kGroup) return Kind::kAnimation;
    }
    if (word == "material" && (open_.empty() || outer == Kind::kGroup || outer == Kind::kObject))
      return Kind::kMaterial;
    if (word == "geometry" && outer == Kind::kObject) return Kind::kGeometry;
    const bool shaderPlace = (word == "surface" && outer == Kind::kMaterial) ||
                             (word == "reflection map" && outer == Kind::kCamera) ||
                             ((word == "!" || word.empty()) && outer == Kind::kShader);
    return shaderPlace && block.nameCount() > 0 ? Kind::kShader : Kind::kOther;
  }

  std::vector<Object>& objects() { return path_.empty() ? scene.objects : path_.back()->objects; }

  void openGroup(const Block& block) {
    auto group = std::make_unique<Group>();
    group->name = block.name();
    group->place = block.place;
    group->parent = path_.empty() ? nullptr : path_.back();
    Group* const opened = group.get();
    (path_.empty() ? scene.groups : path_.back()->children).push_back(std::move(group));
    path_.push_back(opened);
  }

  void closeGroup() {
    Group* const group = path_.back();
    path_.pop_back();
    if (group->holdsGeometry()) sources_[group->name] = group;
  }

  void openShader(const Block& block) {
    const std::size_t names = block.nameCount();
    Shader& shader = shaders_.emplace_back();
    shader.type = block.name(names - 1);
    if (names > 1) shader.parameter = block.name(0);
  }

  void closeShader() {
    Shader shader = std::move(shaders_.back());
    shaders_.pop_back();
    if (!shaders_.empty()) {
      shaders_.back().inner.push_back(std::move(shader));
    } else if (material_) {
      material_->surface = std::move(shader);
    } else if (camera_) {
      camera_->environment = std::move(shader);
    }
  }

  void closeMaterial() {
    Material material = std::move(*material_);
    material_.reset();
    const auto diffuse = material.surface.values.find("diffuse");
    if (diffuse != material.surface.values.end()) {
      const std::vector<double> colour = ArrayView::textValues(diffuse->second).doubles();
      if (colour.size() == 3) material.colour = Vector{colour[0], colour[1], colour[2]};
    }
    if (const Shader* texture = material.surface.find("diffuse")) {
      const auto file = texture->values.find("texture");
      if (file != texture->values.end()) material.texture = file->second;
    }
    materials_[material.name] = material;
    if (object_) {
      object_->material = std::move(material);
    } else {
      scene.materials.push_back(std::move(material));
    }
  }

  // A material that is named only is the last one defined under that name before.
  void setMaterial(std::string name) {
    const auto found = materials_.find(name);
    if (found != materials_.end()) {
      object_->material = found->second;
    } else {
      object_->material.emplace();
      object_->material->name = std::move(name);
    }
  }

  void setGeometry(const Parameter& parameter) {
    if (!parameter.array) {
      object_->values[std::string(parameter.name)] = valueOf(parameter);
      if (object_->geometryType == "instance" && parameter.name == "source") setSource(valueOf(parameter));
      return;
    }
    object_->arrays[std::string(parameter.name)] = *parameter.array;
    if (object_->geometryType != "triangles") return;
    if (parameter.name == "vertices") object_->mesh.vertices = *parameter.array;
    if (parameter.name == "normals") object_->mesh.normals = *parameter.array;
    if (parameter.name == "uv_tex") object_->mesh.uvs = *parameter.array;
    if (parameter.name == "triangles") object_->mesh.triangles = *parameter.array;
  }

  void setSource(std::string name) {
    const auto found = sources_.find(name);
    object_->sourceGroup = found == sources_.end() ? nullptr : found->second;
    object_->source = std::move(name);
  }

  void setAnimation(const Parameter& parameter) {
    if (!parameter.array) {
      animation_->values[std::string(parameter.name)] = valueOf(parameter);
    } else if (parameter.name == "matrices") {
      animation_->matrices = matricesOf(*parameter.array);
    } else if (parameter.name == "timestamps") {
      animation_->timestamps = parameter.array->integers();
    }
  }

  std::vector<Kind> open_;
  std::vector<Group*> path_;
  std::map<std::string, const Group*> sources_;
  std::map<std::string, Material> materials_;
  std::optional<Object> object_;
  std::optional<Material> material_;
  std::optional<Camera> camera_;
  std::optional<Animation> animation_;
  std::vector<Shader> shaders_;
};

void collectGroups(const std::vector<std::unique_ptr<Group>>& groups, std::vector<const Group*>& all) {
  for (const auto& group : groups) {
    all.push_back(group.get());
    collectGroups(group->children, all);
  }
}

}  // namespace

Matrix multiply(const Matrix& first, const Matrix& second) {
  Matrix product{};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      for (std::size_t k = 0; k < 4; ++k) product[row * 4 + column] += first[row * 4 + k] * second[k * 4 + column];
    }
  }
  return product;
}

Vector transformPoint(const Vector& point, const Matrix& matrix) {
  Vector result{};
  for (std::size_t i = 0; i < 3; ++i) {
    result[i] = point[0] * matrix[i] + point[1] * matrix[4 + i] + point[2] * matrix[8 + i] + matrix[12 + i];
  }
  return result;
}

const Shader* Shader::find(std::string_view parameterName) const {
  const auto found =
      std::find_if(inner.begin(), inner.end(), [&](const Shader& shader) { return shader.parameter == parameterName; });
  return found == inner.end() ? nullptr : &*found;
}

bool Group::holdsGeometry() const {
  const auto holdsDrawn = [](const Group& group) {
    return std::any_of(group.objects.begin(), group.objects.end(), [](const Object& object) { return object.drawn(); });
  };
  return holdsDrawn(*this) || std::any_of(children.begin(), children.end(), [&](const auto& inner) {
           return inner->materialGroup() && holdsDrawn(*inner);
         });
}

const Object* Group::reference() const {
  const auto found = std::find_if(objects.begin(), objects.end(),
                                  [](const Object& object) { return object.geometryType == "instance"; });
  return found == objects.end() ? nullptr : &*found;
}

const Group* Group::child(std::string_view childName) const {
  const auto found =
      std::find_if(children.begin(), children.end(), [&](const auto& inner) { return inner->name == childName; });
  return found == children.end() ? nullptr : found->get();
}

Matrix Group::placementInScene() const {
  Matrix matrix = kIdentity;
  for (const Group* group = this; group; group = group->parent) {
    if (group->placement) matrix = multiply(matrix, *group->placement);
  }
  return matrix;
}

std::string_view Scene::option(std::string_view name) const {
  const auto found =
      std::find_if(options.begin(), options.end(), [&](const auto& entry) { return entry.first == name; });
  return found == options.end() ? std::string_view() : std::string_view(found->second);
}

const Camera* Scene::camera(std::string_view name) const {
  const auto found =
      std::find_if(cameras.begin(), cameras.end(), [&](const Camera& entry) { return entry.name == name; });
  return found == cameras.end() ? nullptr : &*found;
}

std::vector<const Group*> Scene::allGroups() const {
  std::vector<const Group*> all;
  collectGroups(groups, all);
  return all;
}

const Group* Scene::find(std::string_view name) const {
  const std::vector<const Group*> all = allGroups();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Group* group) { return group->name == name; });
  return found == all.end() ? nullptr : *found;
}

Scene readScene(std::string_view bytes, const ReadLimits& limits) {
  SceneBuilder builder;
  builder.scene.faultCount = readPackage(bytes, builder, limits);
  return std::move(builder.scene);
}

}  // namespace rpk
