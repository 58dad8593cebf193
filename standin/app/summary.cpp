#include "standin/app/summary.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <set>

#include "standin/app/component_lookup.h"

namespace standin {
namespace {

// More surfaces that were left out are only counted.
constexpr std::size_t kMostNamed = 10;

double seconds(std::chrono::steady_clock::duration duration) { return std::chrono::duration<double>(duration).count(); }

void countParts(const Model& model, std::set<const Model*>& visited, std::size_t& parts) {
  if (!visited.insert(&model).second) return;
  if (model.type == PRO_MDL_PART) ++parts;
  for (const Feature& feature : model.features) {
    if (feature.component) countParts(*feature.component, visited, parts);
  }
}

void printSize(std::ostream& output, const std::filesystem::path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (!error) fmt::print(output, "package       {} bytes\n", size);
}

}  // namespace

void printFailedSurfaces(std::ostream& output, const RunCounts& counts) {
  fmt::print(output, "left out      {}\n", counts.failedSurfaces.size());
  std::size_t named = 0;
  for (const auto& [surface, reason] : counts.failedSurfaces) {
    if (named++ == kMostNamed) {
      fmt::print(output, "  and {} more\n", counts.failedSurfaces.size() - kMostNamed);
      return;
    }
    fmt::print(output, "  {} surface {}: {}\n", displayName(*surface.first), surface.second, reason);
  }
}

void printSummary(std::ostream& output, Session& session, const WrittenPackage* package,
                  std::chrono::steady_clock::duration reading) {
  std::set<const Model*> visited;
  std::size_t parts = 0;
  if (session.current) countParts(*session.current, visited, parts);
  const rpk::PackageCounts* counts = package && package->counts ? &*package->counts : nullptr;
  if (package) fmt::print(output, "{}\n", package->path.string());
  fmt::print(output, "parts         {}\n", parts);
  if (counts) {
    fmt::print(output, "occurrences   {}\n", counts->occurrences);
    fmt::print(output, "references    {}\n", counts->references);
  }
  fmt::print(output, "surfaces      {}\n", session.counts.surfacesTessellated);
  if (counts) fmt::print(output, "triangles     {}\n", counts->triangles);
  printFailedSurfaces(output, session.counts);
  if (package) printSize(output, package->path);
  fmt::print(output, "seconds       read {:.2f}, tessellate {:.2f}, plug-in {:.2f}, session {:.2f}\n", seconds(reading),
             seconds(session.clock.tessellation), seconds(session.clock.plugin), seconds(session.clock.session));
}

}  // namespace standin
