#include "standin/step/step_mesher.h"

#include <BRepBuilderAPI_Copy.hxx>
#include <BRepTools.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <ShapeBuild_ReShape.hxx>
#include <ShapeFix_Shape.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <algorithm>
#include <cmath>
#include <exception>
#include <numeric>

#include "standin/step/revolved_surface.h"
#include "standin/step/surface_mesh.h"

namespace standin {

namespace {

// Runs `work`; an exception leaves its text as the failure of every answer that has no mesh.
template <typename Answers, typename Work>
void guarded(Answers& answers, const Work& work) {
  std::string failure;
  try {
    work();
    return;
  } catch (const Standard_Failure& thrown) {
    failure = thrown.GetMessageString();
  } catch (const std::exception& thrown) {
    failure = thrown.what();
  }
  for (auto& answer : answers) {
    if (!answer.mesh) answer.failure = failure.empty() ? "the triangulation failed" : failure;
  }
}

std::shared_ptr<const SurfaceMesh> meshOf(const std::vector<TopoDS_Face>& pieces, double unit) {
  auto mesh = std::make_shared<SurfaceMesh>();
  for (const TopoDS_Face& piece : pieces) appendTriangulation(piece, unit, *mesh);
  return mesh->facets.empty() ? nullptr : mesh;
}

}  // namespace

StepMesher::StepMesher(std::shared_ptr<const PartShape> shape) : shape_(std::move(shape)) {}

std::shared_ptr<const SurfaceMesh> StepMesher::mesh(std::size_t surface, double chordHeight, std::string& failure) {
  if (surface >= shape_->faces.size()) {
    failure = "no such surface";
    return nullptr;
  }
  if (!(chordHeight > 0.0) || !std::isfinite(chordHeight)) {
    failure = "the chord height is not above zero";
    return nullptr;
  }
  const double fineness = deflection(chordHeight);
  Answer single;
  const Answer* answer = &single;
  if (chordHeight == keptChord_) {
    answer = &kept_[surface];
  } else if (!kept_.empty() && !kept_[surface].mesh) {
    single = tessellate({surface}, fineness).front();
  } else {
    Indices all(shape_->faces.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    kept_ = tessellate(all, fineness);
    keptChord_ = chordHeight;
    answer = &kept_[surface];
  }
  failure = answer->failure;
  return answer->mesh;
}

void StepMesher::forget() {
  kept_.clear();
  kept_.shrink_to_fit();
  keptChord_ = std::numeric_limits<double>::quiet_NaN();
}

std::vector<StepMesher::Answer> StepMesher::tessellate(const Indices& faces, double fineness) {
  std::vector<Answer> answers(faces.size());
  const auto complete = [&] {
    return std::all_of(answers.begin(), answers.end(), [](const Answer& answer) { return answer.mesh != nullptr; });
  };
  const Message_SequenceOfPrinters printers = Message::DefaultMessenger()->Printers();
  Message::DefaultMessenger()->ChangePrinters().Clear();
  guarded(answers, [&] { tessellatePlain(faces, fineness, answers); });
  if (!complete()) guarded(answers, [&] { tessellateConverted(faces, fineness, answers); });
  if (!complete()) guarded(answers, [&] { tessellateRepaired(faces, fineness, answers); });
  Message::DefaultMessenger()->ChangePrinters() = printers;
  for (Answer& answer : answers) {
    if (answer.mesh) {
      answer.failure.clear();
    } else if (answer.failure.empty()) {
      answer.failure = "the face gets no triangulation";
    }
  }
  return answers;
}

void StepMesher::tessellatePlain(const Indices& faces, double fineness, std::vector<Answer>& answers) {
  Pieces shapes;
  for (const std::size_t face : faces) shapes.push_back(shape_->faces[face]);
  const TopoDS_Shape whole = compoundOf(shapes);
  triangulate(whole, fineness);
  for (std::size_t i = 0; i < faces.size(); ++i) answers[i].mesh = meshOf({shapes[i]}, shape_->unit);
  BRepTools::Clean(whole);
}

// Puts the failed faces on B-spline surfaces and meshes everything anew, so that edges stay shared.
void StepMesher::tessellateConverted(const Indices& faces, double fineness, std::vector<Answer>& answers) {
  std::vector<Pieces> shapes;
  Pieces all;
  bool anyConverted = false;
  for (std::size_t i = 0; i < faces.size(); ++i) {
    shapes.push_back({shape_->faces[faces[i]]});
    if (!answers[i].mesh && !converted(faces[i]).empty()) {
      shapes.back() = converted(faces[i]);
      anyConverted = true;
    }
    all.insert(all.end(), shapes.back().begin(), shapes.back().end());
  }
  if (!anyConverted) return;
  const TopoDS_Shape whole = compoundOf(all);
  triangulate(whole, fineness);
  for (std::size_t i = 0; i < faces.size(); ++i) {
    if (auto mesh = meshOf(shapes[i], shape_->unit)) answers[i].mesh = std::move(mesh);
  }
  BRepTools::Clean(whole);
}

// Takes the failed faces from the repaired part. The others keep the meshes of their own surfaces: the repair leaves
// the edges of sound faces alone.
void StepMesher::tessellateRepaired(const Indices& faces, double fineness, std::vector<Answer>& answers) {
  Pieces all;
  for (const std::size_t face : faces) all.insert(all.end(), repaired(face).begin(), repaired(face).end());
  if (all.empty()) return;
  const TopoDS_Shape whole = compoundOf(all);
  triangulate(whole, fineness);
  for (std::size_t i = 0; i < faces.size(); ++i) {
    if (!answers[i].mesh) answers[i].mesh = meshOf(repaired(faces[i]), shape_->unit);
  }
  BRepTools::Clean(whole);
}

const StepMesher::Pieces& StepMesher::converted(std::size_t face) {
  const auto [entry, isNew] = converted_.try_emplace(face);
  if (isNew) {
    const Handle(Geom_BSplineSurface) surface = revolvedBSpline(shape_->faces[face]);
    const TopoDS_Face made = surface.IsNull() ? TopoDS_Face() : faceOnSurface(shape_->faces[face], surface);
    if (!made.IsNull()) entry->second.push_back(made);
  }
  return entry->second;
}

const StepMesher::Pieces& StepMesher::repaired(std::size_t face) {
  if (!repairTried_) {
    repairTried_ = true;
    repaired_.resize(shape_->faces.size());
    // On a copy: the repair changes tolerances in place, and equal requests shall give equal meshes.
    const TopoDS_Shape copy = BRepBuilderAPI_Copy(compoundOf(shape_->faces), true, false).Shape();
    const Handle(ShapeBuild_ReShape) changes = new ShapeBuild_ReShape;
    ShapeFix_Shape fix(copy);
    fix.SetContext(changes);
    fix.Perform();
    std::size_t index = 0;
    for (TopoDS_Iterator it(copy); it.More() && index < repaired_.size(); it.Next(), ++index) {
      for (TopExp_Explorer pieces(changes->Apply(it.Value()), TopAbs_FACE); pieces.More(); pieces.Next()) {
        repaired_[index].push_back(TopoDS::Face(pieces.Current()));
      }
    }
  }
  return repaired_[face];
}

}  // namespace standin
