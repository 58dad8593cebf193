#include "tests/live/random_changes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "standin/app/component_lookup.h"

namespace rendara::testing {
namespace {

using standin::Appearance;
using standin::Feature;
using standin::Layer;
using standin::Model;

template <typename Place>
void collect(Model& owner, const std::vector<int>& path, std::vector<Place>& places) {
  for (Feature& feature : owner.features) {
    if (feature.type != PRO_FEAT_COMPONENT || feature.component == nullptr) {
      continue;
    }
    std::vector<int> below = path;
    below.push_back(feature.id);
    places.push_back({&owner, &feature, below});
    collect(*feature.component, below, places);
  }
}

}  // namespace

RandomChanges::RandomChanges(standin::Session& session, unsigned seed) : session_(session), random_(seed) {}

// Not std::uniform_int_distribution, which gives other numbers with other libraries.
std::size_t RandomChanges::below(std::size_t bound) { return random_() % bound; }

std::vector<RandomChanges::Place> RandomChanges::places() const {
  std::vector<Place> found;
  collect(*session_.current, {}, found);
  return found;
}

std::string RandomChanges::change() {
  using Change = std::string (RandomChanges::*)();
  constexpr Change kChanges[] = {&RandomChanges::move,   &RandomChanges::move, &RandomChanges::suppress,
                                 &RandomChanges::resume, &RandomChanges::hide, &RandomChanges::blank,
                                 &RandomChanges::replace};
  const std::size_t which = below(std::size(kChanges) + 2);
  return which < std::size(kChanges) ? (this->*kChanges[which])() : recolour(true);
}

std::string RandomChanges::move() {
  const auto all = places();
  const Place& place = all[below(all.size())];
  const double angle = 0.1 * static_cast<double>(below(63));
  const standin::Matrix turn = {
      std::cos(angle), std::sin(angle), 0, 0, -std::sin(angle), std::cos(angle), 0, 0, 0, 0, 1, 0, 5, 7, 11, 1};
  place.feature->placement = standin::multiply(place.feature->placement, turn);
  session_.touch(*place.owner);
  return "move " + standin::displayName(*place.feature->component);
}

std::string RandomChanges::recolour(bool newStamp) {
  const auto all = places();
  const Place& place = all[below(all.size())];
  Model& model = *place.feature->component;
  Appearance appearance;
  appearance.name = L"shade" + std::to_wstring(below(1000));
  for (double& channel : appearance.color) {
    channel = 0.01 * static_cast<double>(below(101));
  }
  if (newStamp) {
    session_.touch(model);
  }
  // A part of several materials, or of none, is drawn everywhere as where it was defined first, so the colours of its
  // components would show by chance: they are given to parts of one colour only, and never are all faces coloured.
  const bool byFace = std::any_of(model.surfaces.begin(), model.surfaces.end(),
                                  [](const standin::Surface& surface) { return surface.appearance.has_value(); });
  const bool byComponent = std::any_of(all.begin(), all.end(), [&](const Place& one) {
    return one.feature->component == &model && one.feature->appearance.has_value();
  });
  if (model.surfaces.size() > 1 && !byComponent && below(2) == 0) {
    for (std::size_t i = 1 + below(model.surfaces.size() - 1); i < model.surfaces.size(); ++i) {
      model.surfaces[i].appearance = appearance;
    }
  } else if (!byFace && model.appearance && below(2) == 0) {
    place.feature->appearance = appearance;
  } else {
    model.appearance = appearance;
  }
  return (newStamp ? "recolour " : "recolour silently ") + standin::displayName(model);
}

std::string RandomChanges::suppress() {
  const auto all = places();
  const Place& place = all[below(all.size())];
  place.feature->status = PRO_FEAT_SUPPRESSED;
  session_.touch(*place.owner);
  return "suppress " + standin::displayName(*place.feature->component);
}

std::string RandomChanges::resume() {
  for (const Place& place : places()) {
    if (place.feature->status == PRO_FEAT_SUPPRESSED && below(2) == 0) {
      place.feature->status = PRO_FEAT_ACTIVE;
      session_.touch(*place.owner);
      return "resume " + standin::displayName(*place.feature->component);
    }
  }
  return "resume nothing";
}

std::string RandomChanges::hide() {
  const auto all = places();
  Feature& feature = *all[below(all.size())].feature;
  feature.hidden = !feature.hidden;
  return "hide " + standin::displayName(*feature.component);
}

std::string RandomChanges::blank() {
  const auto all = places();
  const Place& place = all[below(all.size())];
  const std::wstring name = L"BLANKED";
  std::deque<Layer>& layers = place.owner->layers;
  auto layer = std::find_if(layers.begin(), layers.end(), [&](const Layer& one) { return one.name == name; });
  if (layer == layers.end()) {
    place.owner->addLayer(name).items = {{PRO_LAYER_FEAT, place.feature->id}};
    layer = std::prev(layers.end());
  }
  const bool blanked = layer->display == PRO_LAYER_TYPE_BLANK;
  layer->display = blanked ? PRO_LAYER_TYPE_NORMAL : PRO_LAYER_TYPE_BLANK;
  return (blanked ? "show a layer of " : "blank a layer of ") + standin::displayName(*place.owner);
}

std::string RandomChanges::replace() {
  const auto all = places();
  const Place& place = all[below(all.size())];
  const Place& other = all[below(all.size())];
  if (place.feature->component->type != PRO_MDL_PART || other.feature->component->type != PRO_MDL_PART) {
    return "replace nothing";
  }
  place.feature->component = other.feature->component;
  if (place.feature->appearance) {
    place.feature->appearance.reset();
    session_.touch(*place.feature->component);
  }
  session_.touch(*place.owner);
  return "replace by " + standin::displayName(*other.feature->component);
}

std::vector<std::vector<int>> RandomChanges::picks() {
  if (below(8) == 0) {
    return {{}};
  }
  const auto all = places();
  std::vector<std::vector<int>> picked;
  for (std::size_t count = below(4); count > 0; --count) {
    picked.push_back(all[below(all.size())].path);
  }
  return picked;
}

}  // namespace rendara::testing
