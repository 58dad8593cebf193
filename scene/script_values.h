// The forms that typed values and arrays take in a scene script.
#pragma once

#include <cstddef>
#include <cstdint>

#include "scene/script_text.h"
#include "scene/vntScene_api.h"

namespace rendara {

// One value, without anything around it. Types without a text form, and null pointers to numbers, write nothing.
void writeScalarValue(ScriptText& text, int type, const void* value);

// An array that is handed over whole: "[ ", its elements, "] ". Packed are arrays of the types 1, 3, 4 and 6; their
// data go to the stream from the caller's memory.
void writeWholeArray(ScriptText& text, int elementType, const SceneArray& array, bool packed);

// A mark, the tag ('c' three floats an element, 'f' floats, 'i' integers, 'r' doubles), the count of numbers as a
// 32-bit little-endian integer, and `size` bytes of little-endian numbers.
void writePackedRecord(ScriptText& text, char tag, std::uint32_t count, const void* data, std::size_t size);

}  // namespace rendara
