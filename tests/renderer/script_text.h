// Scene scripts written by hand.
#pragma once

#include <string>

#include "tests/rpk/package_text.h"

namespace renderer_test {

inline std::string script(const std::string& groups, const std::string& options = "") {
  return "//---vantor:dal:7---\n//---import:dal:1---\n// This is a Rendara scene file\n\nload \"vntrtopt.so\" {\n"
         "  \"import_merge_groups\" off,\n  \"import_merge_objects\" off,\n  \"import_keep_original\" on,\n" +
         options + "}\n" + groups;
}

// A triangle whose first corner is at x, in a material.
inline std::string mesh(float x, const std::string& material = "steel") {
  return "object \"part\" {\ngeometry \"triangles\" {\n\"vertices\" [ " +
         rpk_test::packedFloats('c', {x, 0, 0, x + 1, 0, 0, x, 1, 0}) + "] ,\n\"triangles\" [ " +
         rpk_test::packedIntegers({0, 1, 2}) + "] ,\n}\nmaterial \"" + material +
         "\" {\nsurface \"vnt_diffuse\" {\n\"diffuse\" 0.5 0.5 0.5,\n}\n}\n}\n";
}

// One material's share of a part.
inline std::string materialGroup(const std::string& content) {
  return "group \"part\" {\nflags 66560\n" + content + "}\n";
}

inline std::string reference(const std::string& source, const std::string& material = "steel") {
  return "object \"part\" {\ngeometry \"instance\" {\n\"source\" \"" + source + "\",\n}\nmaterial \"" + material +
         "\" {\nsurface \"vnt_diffuse\" {\n\"diffuse\" 0.5 0.5 0.5,\n}\n}\n}\n";
}

inline std::string placed(int x) { return "transform 1 0 0 0 0 1 0 0 0 0 1 0 " + std::to_string(x) + " 0 0 1\n"; }

inline std::string animation(int x) {
  return "animation \"fbx_animation\" \"a\" {\n\"duration\" 1,\n\"matrices\" [\n 1 0 0 0 0 1 0 0 0 0 1 0 " +
         std::to_string(x) + " 0 0 1 ],\n}\n";
}

inline std::string group(const std::string& name, const std::string& content = "") {
  return "group \"" + name + "\" {\n" + content + "}\n";
}

inline std::string camera(const std::string& name) { return "camera \"" + name + "\" {\nfov 55\n}\n"; }

}  // namespace renderer_test
