// Mechanism frame files (".fra"): what a motion computed in the CAD system is saved as. A text of tokens:
//
//   parts: 2
//   frames: 50
//   MaFrame 0
//   Part: 2 (5 7)  1 0 0  0 1 0  0 0 1  12.5 0 3
//   Part: 1 (9)  0 1 0  -1 0 0  0 0 1  0 0 0
//   MaFrame 1
//   ...
//
// A record has the number of identifiers of a component's path, the identifiers, and the placement in the top model:
// the rows of the rotation, then the translation. Everything between the records is passed over.
#pragma once

#include <cstdio>

namespace rendara {

struct AnimationFrames;

// Replaces the frames by those of the file, read from its beginning; `animationFrameRate` stays. Components whose
// placements are all equal do not move and are left out. Numbers have single precision, whatever the locale.
//
// Nothing is reported: the end of the file (or a failure to read on) ends the reading, and so does a number that
// cannot be read or has more than 4096 characters; the records complete until then count. Records of paths without
// identifiers or with more than 25 are passed over. The frame count is brought to 0 ... 1,000,000.
void readFrameFile(std::FILE* file, AnimationFrames& frames);

}  // namespace rendara
