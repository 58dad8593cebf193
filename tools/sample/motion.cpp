#include "tools/sample/motion.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

namespace sample {
namespace {

// Single precision is what readers keep; nothing at all is written without a sign.
std::string text(double value) {
  const auto single = static_cast<float>(std::abs(value) < 1e-12 ? 0.0 : value);
  char digits[32];
  std::snprintf(digits, sizeof digits, " %.9g", static_cast<double>(single));
  return digits;
}

std::string record(const Body& body, const MechanismPose& pose) {
  std::string line = "Part: " + std::to_string(body.path.size()) + " (";
  for (std::size_t i = 0; i < body.path.size(); ++i) {
    line += (i == 0 ? "" : " ") + std::to_string(body.path[i]);
  }
  line += ")";
  const gp_Trsf placement = body.placement(pose);
  // Points are rows in the file: what is a column here is a row there, the shift the last.
  for (int column = 1; column <= 4; ++column) {
    for (int row = 1; row <= 3; ++row) {
      line += text(placement.Value(row, column));
    }
  }
  return line + "\n";
}

}  // namespace

MechanismPose mechanismPose(double crankAngle) {
  const double angle = radians(crankAngle);
  const double y = kCrankRadius * std::cos(angle);
  const double z = kCrankRadius * std::sin(angle);
  const double lean = rodLean(crankAngle);
  MechanismPose pose;
  pose.crankDrive = turn(kAlongX, crankAngle, 0, 0, kCrankHeight);
  pose.rodA = turn(kAlongX, lean, kThrowOffset, y, kCrankHeight + z);
  pose.rodB = turn(kAlongX, lean + 180, -kThrowOffset, -y, kCrankHeight - z);
  pose.unitA = turn(kAlongX, -90, kThrowOffset, 0, kCrankHeight);
  pose.unitB = turn(kAlongZ, 180) * pose.unitA;
  pose.piston = shift(0, 0, wristPinDistance(crankAngle));
  return pose;
}

void writeMotion(const std::filesystem::path& file, const std::vector<Body>& bodies) {
  constexpr int kFrames = 50;
  std::ofstream out(file, std::ios::binary);
  out << "Motion of twin_compressor: one turn of the crank\n\nparts: " << bodies.size() << "\nframes: " << kFrames
      << "\n\n";
  for (int frame = 0; frame < kFrames; ++frame) {
    const MechanismPose pose = mechanismPose(kCrankAngle + 360.0 * frame / kFrames);
    out << "MaFrame " << frame << "\n";
    for (const Body& body : bodies) {
      out << record(body, pose);
    }
  }
  out.close();
  if (!out) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

}  // namespace sample
