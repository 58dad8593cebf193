// Packages written by hand for the tests of the reader, byte for byte as a file holds them.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rpk_test {

inline void appendLittleEndian(std::string& text, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
}

inline std::string packedHead(char tag, std::int32_t count) {
  std::string text = "\x01\x02\x03";
  text += tag;
  appendLittleEndian(text, static_cast<std::uint32_t>(count), 4);
  return text;
}

// Tag 'c' or 'f'.
inline std::string packedFloats(char tag, const std::vector<float>& values) {
  std::string text = packedHead(tag, static_cast<std::int32_t>(values.size()));
  for (const float value : values) appendLittleEndian(text, std::bit_cast<std::uint32_t>(value), 4);
  return text;
}

inline std::string packedIntegers(const std::vector<std::int32_t>& values) {
  std::string text = packedHead('i', static_cast<std::int32_t>(values.size()));
  for (const std::int32_t value : values) appendLittleEndian(text, static_cast<std::uint32_t>(value), 4);
  return text;
}

inline std::string packedDoubles(const std::vector<double>& values) {
  std::string text = packedHead('r', static_cast<std::int32_t>(values.size()));
  for (const double value : values) appendLittleEndian(text, std::bit_cast<std::uint64_t>(value), 8);
  return text;
}

// A pump: its rotor twice (a mesh and a reference to it), a housing with exact surfaces in a sub-assembly, two cameras,
// a texture and a motion. The mesh's bytes contain braces, quotes, brackets and line breaks.
inline std::string pumpPackage() {
  const float brace = std::bit_cast<float>(0x7d7b5d22U);       // "]{}
  const float lineBreaks = std::bit_cast<float>(0x0a0a2c5dU);  // ],\n\n
  const std::string camera =
      "    reflection map \"vnt_envmap\" {\n      \"texture\" \"startup.hdr\",\n      \"format\" 3,\n      \"radius\" "
      "25,\n"
      "      \"transform\" 0 0 -1 0 1 0 0 0 0 1 0 0 0 0 0 1,\n    }\n"
      "    position 0 0 2000\n    direction 0 0 -1\n    up 0 1 0\n    fov 55\n"
      "    transform 1 0 0 0 0 0 1 0 0 -1 0 0 0 0 0 1\n    projection \"orthographic\"\n  }\n";
  const std::string diffuse =
      "          surface \"vnt_diffuse\" {\n            \"diffuse\" 0.8 0.2 0.1,\n          }\n";
  return "//---vantor:dal:7---\n//---import:dal:1---\n//---id:1---\n// This is a Rendara scene file\n\n"
         "load \"vntgeometry_nurbs.so\" {\n}\nload \"vntrtopt.so\" {\n  \"import_mode\" on,\n"
         "  \"import_merge_groups\" off,\n  \"import_up_vector\" 1,\n  \"meter_scale\" 39.3701,\n}\n"
         "\ngroup \"pump\" {\n  \n  camera \"Current Creo camera\" {\n" +
         camera + "  \n  camera xX56e9 {\n" + camera +
         "\n  group \"rotor.prt\" {\n    flags 1024\n\n    object \"rotor\" {\n      geometry \"triangles\" {\n"
         "        \"vertices\" [ " +
         packedFloats('c', {0, 0, 0, 10, 0, 0, 0, 10, brace, 10, 10, lineBreaks}) + "] ,\n        \"normals\" [ " +
         packedFloats('c', {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}) + "] ,\n        \"uv_tex\" [ " +
         packedFloats('f', {0, 0, 1, 0, 0, 1, 1, 1}) + "] ,\n        \"triangles\" [ " +
         packedIntegers({0, 1, 2, 2, 1, 3}) + "] ,\n      }\n      material \"rotor:red:204:51:26\" {\n" + diffuse +
         "      }\n    }\n    animation \"fbx_animation\"     \"rotor.prt\" {\n      \"start_time\" 0,\n"
         "      \"duration\" 0.08,\n      \"folder\" \"Creo animation\",\n      \"matrices\" [\n        "
         "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1, 0 1 0 0 -1 0 0 0 0 0 1 0 5 6 7 1 ],\n      \"timestamps\" [\n        " +
         packedIntegers({0, 40}) +
         " ],\n    }\n    transform 1 0 0 0 0 1 0 0 0 0 1 0 100 0 0 1\n  }\n"
         "\n  group \"housing.asm\" {\n    flags 32768\n\n    group \"cover.prt\" {\n      flags 1024\n"
         "\n      group \"cover\" {\n        flags 66560\n\n        object \"cover\" {\n          geometry \"nurbs\" "
         "{\n"
         "            \"umin\" 0.0000000000000000,\n            \"uorder\" 2,\n            \"uknot\" [ " +
         packedDoubles({0, 0, 1, 1}) +
         "] ,\n          }\n          material \"cover:steel:1:2:3\" {\n            surface \"vnt_advanced\" {\n"
         "              \"diffuse\" 0.5 0.5 0.5,\n              \"fresnel\" on,\n"
         "              \"diffuse\" ! \"texture_rgb\" {\n                \"project\" 3,\n                \"wrap\" on,\n"
         "                \"texture\" \"plate.png\",\n              }              ,\n            }\n          }\n     "
         "   }\n"
         "\n        object \"cover\" {\n          geometry \"triangles\" {\n            \"vertices\" [ " +
         packedFloats('c', {0, 0, 0, 1, 0, 0, 0, 1, 0}) + "] ,\n            \"triangles\" [ " +
         packedIntegers({0, 1, 2}) +
         "] ,\n          }\n          material \"rotor:red:204:51:26\"\n          caustics store off\n"
         "          invisible on\n        }\n      }\n      transform 1 0 0 0 0 1 0 0 0 0 1 0 0 20 0 1\n    }\n"
         "    transform 0 1 0 0 -1 0 0 0 0 0 1 0 0 0 3 1\n  }\n"
         "\n  group \"rotor.prt\" {\n\n    object \"rotor\" {\n      geometry \"instance\" {\n"
         "        \"source\" \"rotor.prt\",\n      }\n      material \"rotor:red:204:51:26\" {\n" +
         diffuse + "      }\n    }\n    transform 1 0 0 0 0 1 0 0 0 0 1 0 -100 0 0 1\n  }\n}\n";
}

}  // namespace rpk_test
