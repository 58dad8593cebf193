// A package in which nothing is missing and nothing is wrong, written by hand as the export writes one: mesh, exact
// surface with a trimming loop, motion, reference, a mesh as text, names and bytes in hexadecimal form.
#pragma once

#include <string>

#include "tests/rpk/package_text.h"

namespace rpk_test {

inline std::string wholeSurface() {
  return "        geometry \"nurbs\" {\n          \"umin\" 0.0000000000000000,\n          \"umax\" "
         "1.0000000000000000,\n"
         "          \"vmin\" 0.0000000000000000,\n          \"vmax\" 2.0000000000000000,\n          \"uorder\" 2,\n"
         "          \"vorder\" 2,\n          \"uknot\" [ " +
         packedDoubles({0, 0, 1, 1}) + "] ,\n          \"vknot\" [ " + packedDoubles({0, 0, 2, 2}) +
         "] ,\n          \"Pw\" [ " + packedDoubles({0, 0, 0, 1, 5, 0, 0, 1, 0, 5, 0, 1, 5, 5, 0, 1}) +
         "] ,\n          \"trim_nedges\" [ " + packedIntegers({4}) + "] ,\n          \"trim_inside\" [ " +
         packedIntegers({1}) + "] ,\n          \"edge_order\" [ " + packedIntegers({2, 2, 2, 2}) +
         "] ,\n          \"edge_nknots\" [ " + packedIntegers({4, 4, 4, 4}) + "] ,\n          \"edge_min\" [ " +
         packedDoubles({0, 0, 0, 0}) + "] ,\n          \"edge_max\" [ " + packedDoubles({1, 1, 1, 3}) +
         "] ,\n          \"edge_knot\" [ " + packedDoubles({0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 3, 3}) +
         "] ,\n          \"edge_uvw\" [ " +
         packedDoubles({0, 0, 1, 1, 0, 1, 1, 0, 1, 1, 2, 1, 1, 2, 1, 0, 2, 1, 0, 2, 1, 0, 0, 1}) + "] ,\n        }\n";
}

inline std::string wholeMesh() {
  return "        geometry \"triangles\" {\n          \"vertices\" [ " +
         packedFloats('c', {0, 0, 0, 5, 0, 0, 0, 5, 0, 5, 5, 0}) + "] ,\n          \"normals\" [ " +
         packedFloats('c', {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}) + "] ,\n          \"uv_tex\" [ " +
         packedFloats('f', {0, 0, 1, 0, 0, 1, 1, 1}) + "] ,\n          \"triangles\" [ " +
         packedIntegers({0, 1, 2, 2, 1, 3}) + "] ,\n        }\n";
}

inline std::string wholePackage() {
  const std::string material =
      "        material \"plate:steel:1:2:3\" {\n          surface           \"vnt_diffuse\" {\n"
      "            \"diffuse\" 0.5 0.5 0.5,\n          }          \n        }\n";
  return "//---vantor:dal:7---\n//---import:dal:1---\n//---id:1---\n// This is a Rendara scene file\n\n"
         "load \"vntgeometry_nurbs.so\" {\n}\nload \"vntrtopt.so\" {\n  \"import_mode\" on,\n"
         "  \"import_merge_groups\" off,\n  \"import_merge_objects\" off,\n  \"import_keep_original\" on,\n"
         "  \"import_adjust_environment\" on,\n  \"import_adjust_camera\" on,\n  \"import_up_vector\" 1,\n"
         "  \"meter_scale\" 1000,\n  \"ext\" off,\n}\n"
         "\ngroup \"press\" {\n  \n  camera \"Current Creo camera\" {\n    reflection map     \"vnt_envmap\" {\n"
         "      \"texture\" \"startup.hdr\",\n      \"format\" 3,\n      \"radius\" 25,\n"
         "      \"transform\" 0 0 -1 0 1 0 0 0 0 1 0 0 0 0 0 1,\n    }\n    position 0 0 2000\n    direction 0 0 -1\n"
         "    up 0 1 0\n    fov 55\n    transform 2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1\n    projection \"orthographic\"\n"
         "  }\n\n  group \"plate.prt\" {\n    flags 1024\n\n    group \"plate\" {\n      flags 66560\n\n"
         "      object \"plate\" {\n" +
         wholeSurface() + material + "      }\n\n      object \"plate\" {\n" + wholeMesh() + material +
         "      }\n    }\n    animation \"fbx_animation\"     \"plate.prt\" {\n      \"start_time\" 0,\n"
         "      \"duration\" 0.08,\n      \"folder\" \"Creo animation\",\n      \"matrices\" [\n        "
         "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1, 0 1 0 0 -1 0 0 0 0 0 1 0 5 6 7 1 ],\n      \"timestamps\" [\n        " +
         packedIntegers({0, 40}) +
         " ],\n    }\n    transform 1 0 0 0 0 1 0 0 0 0 1 0 100 0 0 1\n  }\n"
         "\n  group \"plate.prt\" {\n\n    object \"plate\" {\n      geometry \"instance\" {\n"
         "        \"source\" \"plate.prt\",\n      }\n      material \"plate:steel:1:2:3\"\n    }\n"
         "    transform 0 1 0 0 -1 0 0 0 0 0 1 0 0 7 0 1\n  }\n"
         "\n  group xX6be96e74 {\n  }\n" +
         "\n  group \"text.prt\" {\n    flags 1024\n\n    object \"text\" {\n      geometry \"triangles\" {\n"
         "        \"vertices\" [ 0 0 0,1 0 0,0 1 0,\n        1 1 0 ] ,\n        \"triangles\" [ 0,1,2,\n        2,1,3 "
         "] "
         ",\n      }\n      material \"glass\" {\n        surface \"vnt_advanced\" {\n          \"diffuse\" 1 1 1,\n"
         "          \"specular\" 0 0 0,\n          \"fresnel\" on,\n          \"glossy_samples\" 9,\n"
         "          \"diffuse\" ! \"texture_rgb\" {\n            \"project\" 3,\n            \"wrap\" on,\n"
         "            \"texture\" \"plate.png\",\n          }          ,\n        }\n      }\n"
         "      caustics store off\n    }\n    transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n  }\n}\n";
}

}  // namespace rpk_test
