#include "standin/snapshot/mesh_recording.h"

#include <memory>
#include <set>
#include <utility>

namespace standin {
namespace {

// Passes on what the part's own mesher answers, each answer once.
class RecordingMesher : public PartMesher {
 public:
  RecordingMesher(std::shared_ptr<PartMesher> real, const KeepMesh& keep) : real_(std::move(real)), keep_(keep) {}

  std::shared_ptr<const SurfaceMesh> mesh(std::size_t surface, double chordHeight, std::string& failure) override {
    auto answer = real_->mesh(surface, chordHeight, failure);
    if (kept_.emplace(surface, chordHeight).second) keep_(surface, chordHeight, answer.get(), failure);
    return answer;
  }
  void forget() override { real_->forget(); }

 private:
  std::shared_ptr<PartMesher> real_;
  const KeepMesh& keep_;
  std::set<std::pair<std::size_t, double>> kept_;
};

// While it lives a value is another one.
template <typename Value>
class Replaced {
 public:
  Replaced(Value& place, Value value) : place_(place), before_(std::exchange(place, std::move(value))) {}
  ~Replaced() { place_ = std::move(before_); }
  Replaced(const Replaced&) = delete;
  Replaced& operator=(const Replaced&) = delete;

 private:
  Value& place_;
  Value before_;
};

// While it lives everything of the part is shown.
class LaidBare {
 public:
  explicit LaidBare(Model& part) {
    for (Feature& feature : part.features) {
      statuses_.emplace_back(feature.status, PRO_FEAT_ACTIVE);
      flags_.emplace_back(feature.hidden, false);
    }
    for (Surface& surface : part.surfaces) flags_.emplace_back(surface.inactive, false);
    for (Quilt& quilt : part.quilts) {
      for (bool* flag : {&quilt.inactive, &quilt.hidden, &quilt.backup}) flags_.emplace_back(*flag, false);
    }
    for (Layer& layer : part.layers) displays_.emplace_back(layer.display, PRO_LAYER_TYPE_NORMAL);
  }

 private:
  std::deque<Replaced<ProFeatStatus>> statuses_;
  std::deque<Replaced<bool>> flags_;
  std::deque<Replaced<ProLayerDisplay>> displays_;
};

}  // namespace

MeshSource recordedMeshes(Session& session, std::function<void()> exportCurrent) {
  return [&session, run = std::move(exportCurrent)](Model& model, const KeepMesh& keep) {
    if (model.type != PRO_MDL_PART) return;
    const LaidBare bare(model);
    const Replaced<Model*> opened(session.current, &model);
    const Replaced<ProMode> mode(session.mode, PRO_MODE_PART);
    const Replaced<std::shared_ptr<PartMesher>> mesher(model.mesher,
                                                       std::make_shared<RecordingMesher>(model.mesher, keep));
    run();
  };
}

}  // namespace standin
