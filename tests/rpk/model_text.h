// Small packages put together from groups, as the export writes them.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/rpk/package_text.h"

namespace rpk_test {

inline std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += text;
  return all;
}

inline std::string material(const std::string& name, const std::string& diffuse, const std::string& more = "") {
  return "material \"" + name + "\" {\n  surface \"vnt_diffuse\" {\n    \"diffuse\" " + diffuse + ",\n" + more +
         "  }\n}\n";
}

inline std::string red() { return material("red", "1 0 0"); }
inline std::string blue() { return material("blue", "0 0 1"); }

// A right-angled triangle with legs of that length in the xy plane, packed.
inline std::string triangle(float size = 1) {
  return "geometry \"triangles\" {\n  \"vertices\" [ " + packedFloats('c', {0, 0, 0, size, 0, 0, 0, size, 0}) +
         "] ,\n  \"triangles\" [ " + packedIntegers({0, 1, 2}) + "] ,\n}\n";
}

inline std::string square() {
  return "geometry \"triangles\" {\n  \"vertices\" [ " + packedFloats('c', {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}) +
         "] ,\n  \"triangles\" [ " + packedIntegers({0, 1, 2, 0, 2, 3}) + "] ,\n}\n";
}

inline std::string instance(const std::string& source) {
  return "geometry \"instance\" {\n  \"source\" \"" + source + "\",\n}\n";
}

inline std::string object(const std::string& geometry, const std::string& look = red()) {
  return "object \"o\" {\n" + geometry + look + "}\n";
}

// A transform that only moves.
inline std::string at(const std::string& x, const std::string& y = "0", const std::string& z = "0") {
  return "transform 1 0 0 0 0 1 0 0 0 0 1 0 " + x + " " + y + " " + z + " 1\n";
}

inline std::string group(const std::string& name, const std::vector<std::string>& content) {
  return "group \"" + name + "\" {\n" + joined(content) + "}\n";
}

inline std::string package(const std::vector<std::string>& content,
                           const std::string& options = "\"meter_scale\" 1000,\n") {
  return "//---vantor:dal:7---\n//---import:dal:1---\nload \"vntrtopt.so\" {\n" + options + "}\n" +
         group("model", content);
}

}  // namespace rpk_test
