// The parts of the sample compressor, each in coordinates of its own (millimetres). All but the guard are one solid.
#pragma once

#include <TopoDS_Shape.hxx>

namespace sample {

// In the assembly's coordinates.
TopoDS_Shape basePlate();
TopoDS_Shape crankcase();       // open at the top
TopoDS_Shape crankcaseCover();  // closes it
TopoDS_Shape flywheelGuard();   // an open shell: one B-spline surface
TopoDS_Shape transportBracket();
TopoDS_Shape teeBlock();
TopoDS_Shape airPipe();  // from head A to the tee
// Origin in the middle of what it is put on, Z away from there.
TopoDS_Shape foot();
TopoDS_Shape boltM6();
TopoDS_Shape unionNut();
TopoDS_Shape oilPlug();
TopoDS_Shape pressureGauge();             // its face looks to +X
inline constexpr double kGaugeAxis = 33;  // height of the dial's middle
// Lies on the plane x = 0 and looks to +X; the text runs along +Y. The parameters of its front run from 0 to 1.
TopoDS_Shape nameplate();
inline constexpr double kNameplateWidth = 70;
inline constexpr double kNameplateHeight = 30;

// Origin on the crank axis in the middle between the throws; throw A points to +Y.
TopoDS_Shape crankshaft();
// Origin in the middle of the hub, axis X.
TopoDS_Shape flywheel();
// Origin in the big eye, the small eye at (0, kRodLength, 0); axes of the eyes along X.
TopoDS_Shape connectingRod();
// Origin in the wrist pin's axis X; the crown points to +Z.
TopoDS_Shape piston();
TopoDS_Shape wristPin();
// In the cylinder unit's coordinates.
TopoDS_Shape barrel();
// Origin in the middle of the face that meets the barrel; Z away from it, the outlet on the side of -Y.
TopoDS_Shape cylinderHead();
TopoDS_Shape valveCover();
inline constexpr double kHeadBoltPlace = 31;       // of the four bolts in x and y
inline constexpr double kHeadPlateThickness = 14;  // under the heads of the bolts

}  // namespace sample
