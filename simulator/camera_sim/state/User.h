/// @file
/// Who may use a camera.
#ifndef CAMERA_SIM_STATE_USER_H
#define CAMERA_SIM_STATE_USER_H

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace camera_sim {

/// What somebody may do, each more than the one before: nothing; read; control and configure what
/// the camera sees, and switch relays; set the clock and the network.
enum class Role { kNone, kUser, kOperator, kAdministrator };

struct User {
    std::string name;
    std::string password;
    Role role = Role::kAdministrator;
};

/// Null when there is none of that name.
inline const User* FindUser(const std::vector<User>& users, std::string_view name) {
    const auto found = std::find_if(users.begin(), users.end(),
                                    [name](const User& user) { return user.name == name; });
    return found == users.end() ? nullptr : &*found;
}

}  // namespace camera_sim

#endif
