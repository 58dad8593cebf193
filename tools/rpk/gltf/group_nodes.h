// The tree of groups as a tree of nodes, with the animations.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/rpk/gltf/binary_data.h"
#include "tools/rpk/gltf/mesh_table.h"
#include "tools/rpk/gltf/motion.h"
#include "tools/rpk/scene_summary.h"

namespace tinygltf {
class Node;
}

namespace rpk {

class GroupNodes {
 public:
  GroupNodes(tinygltf::Model& model, BinaryData& data, MeshTable& meshes, std::vector<std::string>& warnings)
      : model_(model), data_(data), meshes_(meshes), warnings_(warnings) {}

  // Adds the groups with everything below them, but for groups of one material, which are part of the group around
  // them. Gives the indices of their nodes.
  std::vector<int> add(const std::vector<std::unique_ptr<Group>>& groups, const Matrix& around = kIdentity);

  // What is drawn, in model units.
  const Bounds& bounds() const { return bounds_; }

 private:
  // Nodes for one group: the outermost, and the one that holds mesh and children. They are one but for placements and
  // motions that a single node cannot say.
  struct Chain {
    int outer = 0;
    int content = 0;
  };

  int addGroup(const Group& group, const Matrix& around);
  Matrix placementOf(const Group& group);
  Chain addChain(const Group& group, const Matrix& placement);
  int addNode(const Group& group);
  int addInside(int node, const Group& group);
  void animate(int node, const Motion& motion);
  void addChannel(int node, const char* path, int times, const std::vector<float>& values, std::size_t components);
  int timesOf(const std::vector<float>& times);

  tinygltf::Model& model_;
  BinaryData& data_;
  MeshTable& meshes_;
  std::vector<std::string>& warnings_;
  std::map<std::vector<float>, int> times_;
  Bounds bounds_;
};

}  // namespace rpk
