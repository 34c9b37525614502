#include "Support/Machine.h"

#include <nlohmann/json.hpp>

namespace Simulator {

using Json = nlohmann::json;

std::optional<User> Machine::user(std::string_view name) const {
    if (name == "root") {
        return User{"root", 0, false};
    }
    for (const User& user : users) {
        if (user.name == name) {
            return user;
        }
    }
    return std::nullopt;
}

std::string encode(const Machine& machine) {
    Json json{{"users", Json::array()},
              {"running", Json::array()},
              {"extensionFolders", machine.extensionFolders},
              {"distantObjects", machine.distantObjects}};
    for (const User& user : machine.users) {
        json["users"].push_back({{"name", user.name},
                                 {"uid", user.uid},
                                 {"loggedIn", user.loggedIn},
                                 {"administrator", user.administrator},
                                 {"passwordHash", user.passwordHash}});
    }
    for (const RunningProgram& program : machine.running) {
        json["running"].push_back({{"path", program.path}, {"uid", program.uid}});
    }
    return json.dump(2) + "\n";
}

std::string encode(const Session& session) {
    const Json json{{"command", session.command},
                    {"user", session.user},
                    {"faults", session.faults},
                    {"environment", session.environment},
                    {"wait", session.wait}};
    return json.dump(2) + "\n";
}

std::optional<Machine> decodeMachine(std::string_view text) {
    try {
        const Json json = Json::parse(text);
        Machine machine;
        for (const Json& user : json.at("users")) {
            machine.users.push_back({user.at("name"), user.at("uid"), user.at("loggedIn"),
                                     user.at("administrator"), user.at("passwordHash")});
        }
        for (const Json& program : json.at("running")) {
            machine.running.push_back({program.at("path"), program.at("uid")});
        }
        machine.extensionFolders = json.at("extensionFolders").get<std::vector<std::string>>();
        machine.distantObjects =
            json.at("distantObjects").get<std::map<std::string, std::vector<std::string>>>();
        return machine;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

std::optional<Session> decodeSession(std::string_view text) {
    try {
        const Json json = Json::parse(text);
        Session session;
        session.command = json.at("command").get<std::vector<std::string>>();
        session.user = json.at("user").get<std::string>();
        for (const auto& [name, value] : json.at("faults").items()) {
            session.faults[name] = value.get<std::string>();
        }
        session.environment = json.at("environment").get<std::map<std::string, std::string>>();
        session.wait = json.value("wait", kUsualWait);
        return session;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

}  // namespace Simulator
