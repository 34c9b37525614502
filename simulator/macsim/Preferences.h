#pragma once

#include <string>
#include <vector>

#include "Support/Machine.h"
#include "macsim/MacBuilder.h"
#include "macsim/MacRoot.h"

namespace Simulator {

/// Lays down the global preferences of all users, root included.
void buildPreferences(MacBuilder& mac, const std::vector<User>& users,
                      const std::vector<std::string>& languages);

/// Changes the languages of one user of a Mac that does not run and keeps the user's other preferences.
/// Throws a Refusal if that fails.
void setLanguages(const MacRoot& mac, const User& user, const std::vector<std::string>& languages);

/// The password that lifts the parental-control lock.
inline constexpr const char* kParentalControlPassword = "sentrel";

/// Records the state of the parental-control lock for the maker's framework: "off", "on" or "refused".
void buildParentalControl(MacBuilder& mac, const std::string& state);

}  // namespace Simulator
