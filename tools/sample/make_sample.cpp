// Writes the sample assembly samples/twin_compressor.step, its motion samples/twin_compressor.fra and the texture
// samples/nameplate.png. Run again, it writes the same bytes. What STEP does not carry stands in
// samples/twin_compressor.json, which is kept by hand.
#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <gp_Trsf.hxx>
#include <iostream>
#include <string>
#include <vector>

#include "tools/sample/mechanism.h"
#include "tools/sample/motion.h"
#include "tools/sample/nameplate_image.h"
#include "tools/sample/parts.h"
#include "tools/sample/placements.h"
#include "tools/sample/sample_document.h"

namespace {

using sample::Colour;
using sample::kAlongX;
using sample::kAlongZ;
using sample::MechanismPose;
using sample::SampleDocument;
using sample::shift;
using sample::turn;

constexpr Colour kCastIron = {86, 98, 112};
constexpr Colour kBlue = {38, 84, 140};
constexpr Colour kAluminium = {188, 192, 196};
constexpr Colour kSteel = {150, 154, 160};
constexpr Colour kDarkSteel = {92, 95, 100};
constexpr Colour kZinc = {206, 204, 192};
constexpr Colour kPlateFront = {216, 218, 220};
constexpr Colour kRubber = {34, 34, 36};
constexpr Colour kRed = {176, 40, 34};
constexpr Colour kYellow = {226, 178, 30};
constexpr Colour kCopper = {186, 110, 70};
constexpr Colour kBrass = {196, 160, 84};
constexpr Colour kWhite = {240, 240, 236};
constexpr Colour kOrange = {214, 92, 28};

const gp_Trsf kHere;

// Which part of the gauge a face belongs to is told by its middle and by its farthest corner from the dial's axis.
struct FaceExtent {
  gp_Pnt middle;
  double middleOut = 0;
  double out = 0;
};

FaceExtent extentOf(const TopoDS_Face& face) {
  GProp_GProps properties;
  BRepGProp::SurfaceProperties(face, properties);
  const gp_Pnt middle = properties.CentreOfMass();
  Bnd_Box bounds;
  BRepBndLib::AddOptimal(face, bounds, false, false);
  const gp_Pnt low = bounds.CornerMin();
  const gp_Pnt high = bounds.CornerMax();
  const double axis = sample::kGaugeAxis;
  const double y = std::max(std::abs(low.Y()), std::abs(high.Y()));
  const double z = std::max(std::abs(low.Z() - axis), std::abs(high.Z() - axis));
  return {middle, std::hypot(middle.Y(), middle.Z() - axis), std::max(y, z)};
}

std::optional<Colour> gaugeColour(const TopoDS_Face& face) {
  const FaceExtent extent = extentOf(face);
  const double x = extent.middle.X();
  const bool stem = extent.middle.Z() < 12;
  const bool ring = extent.out > 22.2;
  if (stem || ring) {
    return kBrass;
  }
  const bool dial = extent.out > 19.95 && std::abs(x - 5) < 0.1;
  if (dial) {
    return kWhite;
  }
  const bool needle = extent.middleOut < 15.2 && extent.out < 16 && x > 4.9;
  return needle ? std::optional<Colour>(kRed) : std::nullopt;
}

// The front has a colour of its own, by which the texture finds it.
std::optional<Colour> nameplateColour(const TopoDS_Face& face) {
  return extentOf(face).middle.X() > 1.1 ? std::optional<Colour>(kPlateFront) : std::nullopt;
}

TDF_Label addHead(SampleDocument& document, const TDF_Label& bolt) {
  const TDF_Label head = document.addAssembly("head");
  document.place(head, document.addPart("cylinder_head", sample::cylinderHead(), kAluminium), kHere, "cylinder_head");
  document.place(head, document.addPart("valve_cover", sample::valveCover(), kBlue), shift(0, 0, 28), "valve_cover");
  int number = 1;
  for (const double x : {-sample::kHeadBoltPlace, sample::kHeadBoltPlace}) {
    for (const double y : {-sample::kHeadBoltPlace, sample::kHeadBoltPlace}) {
      document.place(head, bolt, shift(x, y, sample::kHeadPlateThickness), "head_bolt_" + std::to_string(number++));
    }
  }
  return head;
}

TDF_Label addCylinderUnit(SampleDocument& document, const TDF_Label& bolt) {
  const gp_Trsf pin = sample::mechanismPose(sample::kCrankAngle).piston;
  const TDF_Label unit = document.addAssembly("cylinder_unit");
  document.place(unit, document.addPart("cylinder_barrel", sample::barrel(), kCastIron), kHere, "cylinder_barrel");
  document.place(unit, document.addPart("piston", sample::piston(), kAluminium), pin, "piston");
  document.place(unit, document.addPart("wrist_pin", sample::wristPin(), kSteel), pin, "wrist_pin");
  document.place(unit, addHead(document, bolt), shift(0, 0, sample::kHeadFace), "head");
  return unit;
}

void addFrame(SampleDocument& document, const TDF_Label& top, const TDF_Label& bolt) {
  document.place(top, document.addPart("base_plate", sample::basePlate(), kCastIron), kHere, "base_plate");
  const TDF_Label foot = document.addPart("foot", sample::foot(), kRubber);
  int number = 1;
  for (const double x : {-100.0, 80.0}) {
    for (const double y : {-130.0, 130.0}) {
      document.place(top, foot, shift(x, y, 0), "foot_" + std::to_string(number++));
    }
  }
  document.place(top, document.addPart("crankcase", sample::crankcase(), kBlue), kHere, "crankcase");
  number = 1;
  for (const double x : {-69.0, 69.0}) {
    for (const double y : {-36.0, 36.0}) {
      document.place(top, bolt, shift(x, y, sample::kBasePlateTop + 8), "base_bolt_" + std::to_string(number++));
    }
  }
}

// The cylinder unit, which is placed twice.
TDF_Label addMechanism(SampleDocument& document, const TDF_Label& top, const TDF_Label& bolt) {
  const TDF_Label drive = document.addAssembly("crank_drive");
  document.place(drive, document.addPart("crankshaft", sample::crankshaft(), kDarkSteel), kHere, "crankshaft");
  document.place(drive, document.addPart("flywheel", sample::flywheel(), kRed), shift(sample::kFlywheelPlace, 0, 0),
                 "flywheel");
  const MechanismPose pose = sample::mechanismPose(sample::kCrankAngle);
  document.place(top, drive, pose.crankDrive, "crank_drive");

  const TDF_Label rod = document.addPart("connecting_rod", sample::connectingRod(), kSteel);
  document.place(top, rod, pose.rodA, "rod_a");
  document.place(top, rod, pose.rodB, "rod_b");

  const TDF_Label unit = addCylinderUnit(document, bolt);
  document.place(top, unit, pose.unitA, "cylinder_a");
  document.place(top, unit, pose.unitB, "cylinder_b");
  return unit;
}

void addAccessories(SampleDocument& document, const TDF_Label& top) {
  const TDF_Label line = document.addAssembly("air_line");
  const TDF_Label nut = document.addPart("union_nut", sample::unionNut(), kBrass);
  document.place(line, document.addPart("air_pipe", sample::airPipe(), kCopper), kHere, "air_pipe");
  document.place(line, nut, shift(sample::kThrowOffset, sample::kHeadFace + 7, sample::kCrankHeight + 48), "lower_nut");
  document.place(line, nut, turn(kAlongX, -90, 0, sample::kTeeHalfSize, sample::kTeeHeight), "upper_nut");
  document.place(top, line, kHere, "air_line_a");
  document.place(top, line, turn(kAlongZ, 180), "air_line_b");
  document.place(top, document.addPart("tee_block", sample::teeBlock(), kBrass), kHere, "tee_block");
  const TDF_Label gauge = document.addPart("pressure_gauge", sample::pressureGauge(), kRubber);
  document.colourFaces(gauge, gaugeColour);
  document.place(top, gauge, shift(0, 0, sample::kTeeHeight + sample::kTeeHalfSize), "pressure_gauge");
  document.place(top, document.addPart("flywheel_guard", sample::flywheelGuard(), kYellow), kHere, "flywheel_guard");
  const TDF_Label plate = document.addPart("nameplate", sample::nameplate(), kZinc);
  document.colourFaces(plate, nameplateColour);
  document.place(top, plate, shift(sample::kWallHalfLength, -sample::kNameplateWidth / 2, 34), "nameplate");
  document.place(top, document.addPart("oil_plug", sample::oilPlug(), kOrange),
                 turn(kAlongX, -90, -30, sample::kWallHalfWidth, 36), "oil_plug");
  document.place(top, document.addPart("transport_bracket", sample::transportBracket(), kOrange), kHere,
                 "transport_bracket");
  document.place(top, document.addPart("crankcase_cover", sample::crankcaseCover(), kBlue), kHere, "crankcase_cover");
}

// The bodies of the mechanism: what moves, and some of what it moves in.
void writeMotion(const SampleDocument& document, const TDF_Label& top, const TDF_Label& unit,
                 const std::filesystem::path& file) {
  std::vector<sample::Body> bodies;
  const auto add = [&](const std::string& name, auto placement) {
    bodies.push_back({{document.componentNumber(top, name)}, placement});
  };
  add("base_plate", [](const MechanismPose&) { return kHere; });
  add("crankcase", [](const MechanismPose&) { return kHere; });
  add("crank_drive", [](const MechanismPose& pose) { return pose.crankDrive; });
  add("rod_a", [](const MechanismPose& pose) { return pose.rodA; });
  add("rod_b", [](const MechanismPose& pose) { return pose.rodB; });
  const auto addUnit = [&](const std::string& name, auto place) {
    add(name, place);
    for (const char* inside : {"piston", "wrist_pin"}) {
      bodies.push_back({{document.componentNumber(top, name), document.componentNumber(unit, inside)},
                        [place](const MechanismPose& pose) { return place(pose) * pose.piston; }});
    }
  };
  addUnit("cylinder_a", [](const MechanismPose& pose) { return pose.unitA; });
  addUnit("cylinder_b", [](const MechanismPose& pose) { return pose.unitB; });
  sample::writeMotion(file, bodies);
}

// The translator tells of its progress; only failures matter here.
void silenceTranslator() {
  for (Message_SequenceOfPrinters::Iterator printer(Message::DefaultMessenger()->Printers()); printer.More();
       printer.Next()) {
    printer.Value()->SetTraceLevel(Message_Fail);
  }
}

void makeSample(const std::filesystem::path& folder) {
  SampleDocument document;
  const TDF_Label top = document.addAssembly("twin_compressor");
  const TDF_Label bolt = document.addPart("bolt_m6", sample::boltM6(), kZinc);
  addFrame(document, top, bolt);
  const TDF_Label unit = addMechanism(document, top, bolt);
  addAccessories(document, top);
  document.writeStep(folder / "twin_compressor.step");
  writeMotion(document, top, unit, folder / "twin_compressor.fra");
  sample::writeNameplate(folder / "nameplate.png");
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: make_sample FOLDER\n";
    return 2;
  }
  try {
    silenceTranslator();
    makeSample(arguments[1]);
  } catch (const Standard_Failure& failure) {
    std::cerr << "make_sample: " << failure.DynamicType()->Name() << ' ' << failure.GetMessageString() << '\n';
    return 1;
  } catch (const std::exception& error) {
    std::cerr << "make_sample: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
