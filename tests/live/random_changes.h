// Changes of a model as a user makes them, by chance but the same for the same seed.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "standin/cad/session.h"

namespace rendara::testing {

class RandomChanges {
 public:
  RandomChanges(standin::Session& session, unsigned seed);

  // A number below the bound, above 0.
  std::size_t below(std::size_t bound);

  // Changes something of the model, and says what.
  std::string change();
  // Colours a part without a new version stamp, so that nothing tells that it changed.
  std::string recolourSilently() { return recolour(false); }
  // Some components, at any level, or now and then the whole model.
  std::vector<std::vector<int>> picks();

 private:
  struct Place {
    standin::Model* owner;
    standin::Feature* feature;
    std::vector<int> path;
  };
  std::vector<Place> places() const;
  std::string move();
  std::string recolour(bool newStamp);
  std::string suppress();
  std::string resume();
  std::string hide();
  std::string blank();
  std::string replace();

  standin::Session& session_;
  std::mt19937 random_;
};

}  // namespace rendara::testing
