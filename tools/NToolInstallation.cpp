#include "tools/NToolInstallation.h"

#include <mutex>
#include <sstream>

#include "config/NConfigEntry.h"
#include "config/NLibraryState.h"

bool NSetToolInstallation(const std::string& list, std::string* error) {
  bool skeldon = false, quenn = false, parrow = false;
  std::istringstream names(list);
  for (std::string name; std::getline(names, name, ',');) {
    if (name == "skeldon") {
      skeldon = true;
    } else if (name == "quenn") {
      quenn = true;
    } else if (name == "parrow") {
      parrow = true;
    } else {
      *error = "'" + name + "' is not one of skeldon, quenn, parrow";
      return false;
    }
  }
  SetSkeldonInstalled(skeldon);
  SetParrowInstalled(parrow);
  // The older terminal has no setter of its own: hosts never change it.
  NLibraryState& state = NLibraryState::Get();
  std::lock_guard<std::recursive_mutex> lock(state.mutex);
  state.quennInstalled = quenn;
  return true;
}
