#include "tools/rpk/exact/exact_mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tools/rpk/exact/trim_loops.h"
#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

constexpr int kDeepest = 9;                   // halvings of a trimming curve's knot span
constexpr std::size_t kMostCorners = 100000;  // of a boundary that is still refined
constexpr std::size_t kMostSteps = 256;       // of the surface in one direction
constexpr std::size_t kMostCells = 300000;    // quadrangles that a surface is refined to
// What is not done by then belongs to a boundary that winds to and fro without an inside.
constexpr std::size_t kMostTriangles = 1000000;
constexpr double kSame = 1e-9;  // of the domain: corners at one height

Vector middle(const Vector& a, const Vector& b) { return {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2}; }

// Cuts a trimmed domain into horizontal strips between the corners of its boundary, and these into quadrangles.
class StripMesher {
 public:
  StripMesher(const TrimmedSurface& trimmed, double chord) : surface_(trimmed.surface), chord_(chord) {
    for (const TrimLoop& loop : trimmed.loops) addLoop(loop);
    if (trimmed.loops.empty()) addDomain();
  }

  TriangleMesh run() {
    if (corners_.empty()) return {};
    const double uStep = step(true);
    const double vStep = step(false);
    const std::vector<double> heights = stripHeights(vStep);
    mostColumns_ = std::clamp<std::size_t>(kMostCells / heights.size(), 1, kMostSteps);
    std::sort(edges_.begin(), edges_.end(), [](const Edge& a, const Edge& b) { return a.low[1] < b.low[1]; });
    for (std::size_t i = 0; i + 1 < heights.size() && mesh_.triangleCount() < kMostTriangles; ++i) {
      addStrip(heights[i], heights[i + 1], uStep);
    }
    return std::move(mesh_);
  }

 private:
  struct Edge {
    Parameter2 low, high;  // low[1] < high[1]
    double at(double v) const { return low[0] + (high[0] - low[0]) * (v - low[1]) / (high[1] - low[1]); }
  };

  Vector positionAt(const Parameter2& uv) const { return surface_.at(uv[0], uv[1]).position; }

  void addDomain() {
    const double u0 = surface_.uMin(), u1 = surface_.uMax(), v0 = surface_.vMin(), v1 = surface_.vMax();
    addPolygon({{u0, v0}, {u1, v0}, {u1, v1}, {u0, v1}});
  }

  void addLoop(const TrimLoop& loop) {
    const ChainedLoop chain = chainLoop(loop);
    Polygon polygon;
    for (const ChainedLoop::Piece& piece : chain.pieces) {
      std::vector<double> shares = {0};
      for (const double knot : piece.curve->knots) {
        const double share = (knot - piece.curve->first()) / (piece.curve->last() - piece.curve->first());
        if (share > 0 && share < 1) shares.push_back(piece.backwards ? 1 - share : share);
      }
      shares.push_back(1);
      std::sort(shares.begin(), shares.end());
      shares.erase(std::unique(shares.begin(), shares.end()), shares.end());
      for (std::size_t i = 0; i + 1 < shares.size(); ++i) {
        polygon.push_back(piece.at(shares[i]));
        refine(piece, shares[i], shares[i + 1], 0, polygon);
      }
    }
    addPolygon(polygon);
  }

  // Appends the corners between two shares.
  void refine(const ChainedLoop::Piece& piece, double from, double to, int depth, Polygon& polygon) const {
    const double half = (from + to) / 2;
    const Vector a = positionAt(piece.at(from));
    const Vector b = positionAt(piece.at(to));
    const Parameter2 between = piece.at(half);
    const double quarter = distance(middle(a, positionAt(between)), positionAt(piece.at((from + half) / 2)));
    const double off = std::max(distance(middle(a, b), positionAt(between)), quarter);
    // A closed curve can have its middle between its ends by chance, so the first halvings are made in any case.
    if (depth >= kDeepest || corners_.size() + polygon.size() > kMostCorners ||
        (off <= chord_ && (depth > 1 || piece.curve->degree == 1)))
      return;
    refine(piece, from, half, depth + 1, polygon);
    polygon.push_back(between);
    refine(piece, half, to, depth + 1, polygon);
  }

  void addPolygon(const Polygon& polygon) {
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      const Parameter2& a = polygon[i];
      const Parameter2& b = polygon[(i + 1) % polygon.size()];
      corners_.push_back(a[1]);
      uLow_ = std::min(uLow_, a[0]);
      uHigh_ = std::max(uHigh_, a[0]);
      if (a[1] < b[1]) edges_.push_back({a, b});
      if (b[1] < a[1]) edges_.push_back({b, a});
    }
  }

  // A step of one parameter in which the surface's lines bend by no more than a chord.
  double step(bool alongU) const {
    const auto [vLow, vHigh] = std::minmax_element(corners_.begin(), corners_.end());
    const double low = alongU ? uLow_ : *vLow;
    const double range = (alongU ? uHigh_ : *vHigh) - low;
    const double otherLow = alongU ? *vLow : uLow_;
    const double otherRange = alongU ? *vHigh - *vLow : uHigh_ - uLow_;
    const auto pointAt = [&](double share, double other) {
      const double own = low + range * share;
      const double across = otherLow + otherRange * other;
      return positionAt(alongU ? Parameter2{own, across} : Parameter2{across, own});
    };
    for (std::size_t steps = 1;; steps *= 2) {
      if (steps >= kMostSteps) return range / static_cast<double>(kMostSteps);
      double widest = 0;
      for (const double other : {0.02, 0.35, 0.65, 0.98}) {
        for (std::size_t i = 0; i < steps; ++i) {
          const double from = static_cast<double>(i) / static_cast<double>(steps);
          const double width = 1 / static_cast<double>(steps);
          const Vector a = pointAt(from, other);
          const Vector c = pointAt(from + width / 2, other);
          const Vector b = pointAt(from + width, other);
          widest =
              std::max({widest, distance(middle(a, b), c), distance(middle(a, c), pointAt(from + width / 4, other))});
        }
      }
      if (widest <= chord_) return range / static_cast<double>(steps);
    }
  }

  std::vector<double> stripHeights(double vStep) const {
    std::vector<double> sorted = corners_;
    std::sort(sorted.begin(), sorted.end());
    const double range = sorted.back() - sorted.front();
    std::vector<double> heights = {sorted.front()};
    for (const double corner : sorted) {
      const double gap = corner - heights.back();
      if (gap <= kSame * range) continue;
      const auto parts = vStep > 0 ? static_cast<std::size_t>(std::ceil(gap / vStep - 1e-6)) : 1;
      const double base = heights.back();
      for (std::size_t i = 1; i < parts; ++i) {
        heights.push_back(base + gap * static_cast<double>(i) / static_cast<double>(parts));
      }
      heights.push_back(corner);
    }
    return heights;
  }

  void addStrip(double bottom, double top, double uStep) {
    const double half = (bottom + top) / 2;
    std::erase_if(crossing_, [half](const Edge* edge) { return edge->high[1] <= half; });
    for (; nextEdge_ < edges_.size() && edges_[nextEdge_].low[1] < half; ++nextEdge_) {
      if (edges_[nextEdge_].high[1] > half) crossing_.push_back(&edges_[nextEdge_]);
    }
    std::sort(crossing_.begin(), crossing_.end(),
              [half](const Edge* a, const Edge* b) { return a->at(half) < b->at(half); });
    for (std::size_t i = 0; i + 1 < crossing_.size(); i += 2) {
      addQuadrangles(*crossing_[i], *crossing_[i + 1], bottom, top, uStep);
    }
  }

  void addQuadrangles(const Edge& left, const Edge& right, double bottom, double top, double uStep) {
    const auto clamped = [&](const Edge& edge, double v) { return edge.at(std::clamp(v, edge.low[1], edge.high[1])); };
    const double width =
        std::max(clamped(right, bottom) - clamped(left, bottom), clamped(right, top) - clamped(left, top));
    const double wanted = uStep > 0 ? std::ceil(width / uStep - 1e-6) : 1;
    const auto columns = static_cast<std::size_t>(std::clamp(wanted, 1.0, static_cast<double>(mostColumns_)));
    const auto base = static_cast<std::uint32_t>(mesh_.vertexCount());
    const double half = (bottom + top) / 2;
    const Parameter2 center = {(clamped(left, half) + clamped(right, half)) / 2, half};
    for (std::size_t column = 0; column <= columns; ++column) {
      const double share = static_cast<double>(column) / static_cast<double>(columns);
      for (const double v : {bottom, top}) {
        const double from = clamped(left, v);
        addVertex({from + (clamped(right, v) - from) * share, v}, center);
      }
    }
    for (std::uint32_t column = 0; column < columns; ++column) {
      const std::uint32_t first = base + 2 * column;
      for (const std::uint32_t corner : {0U, 2U, 3U, 0U, 3U, 1U}) mesh_.indices.push_back(first + corner);
    }
  }

  // Su x Sv, not normalised.
  Vector normalAt(const Parameter2& uv) const {
    const NurbsPoint point = surface_.at(uv[0], uv[1]);
    const Vector& a = point.du;
    const Vector& b = point.dv;
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
  }

  // A pole has no normal of its own: it takes the one a little way off, where `inner` lies.
  void addVertex(const Parameter2& uv, const Parameter2& inner) {
    constexpr double kShortest = 1e-9;
    constexpr double kNudge = 1e-3;
    const Parameter2 beside = {uv[0] + (inner[0] - uv[0]) * kNudge, uv[1] + (inner[1] - uv[1]) * kNudge};
    const Vector off = normalAt(beside);
    const double scale = std::hypot(off[0], off[1], off[2]);
    Vector normal = normalAt(uv);
    if (std::hypot(normal[0], normal[1], normal[2]) <= kShortest * scale) normal = off;
    const double length = std::hypot(normal[0], normal[1], normal[2]);
    const Vector position = positionAt(uv);
    const bool hasNormal = length > 0 && std::isfinite(length);
    constexpr double kFarthest = std::numeric_limits<float>::max();
    for (std::size_t k = 0; k < 3; ++k) {
      mesh_.positions.push_back(static_cast<float>(std::clamp(position[k], -kFarthest, kFarthest)));
      mesh_.normals.push_back(static_cast<float>(hasNormal ? normal[k] / length : (k == 2 ? 1 : 0)));
    }
    mesh_.uvs.push_back(static_cast<float>(uv[0]));
    mesh_.uvs.push_back(static_cast<float>(uv[1]));
  }

  const NurbsSurface& surface_;
  double chord_;
  std::vector<double> corners_;  // heights of the boundary's corners
  double uLow_ = std::numeric_limits<double>::infinity();
  double uHigh_ = -std::numeric_limits<double>::infinity();
  std::vector<Edge> edges_;               // by their lower ends
  std::size_t nextEdge_ = 0;              // the first that begins above the strip
  std::vector<const Edge*> crossing_;     // the strip, from left to right
  std::size_t mostColumns_ = kMostSteps;  // of a strip between two edges
  TriangleMesh mesh_;
};

}  // namespace

TriangleMesh exactMesh(const TrimmedSurface& trimmed, double chord) { return StripMesher(trimmed, chord).run(); }

}  // namespace rpk
