#include "RandomMac.h"

#include <cerrno>
#include <ostream>

#include "support/ProductPlaces.h"

namespace RandomMacs {

namespace Places = TestSupport::ProductPlaces;
using Kind = Component::Kind;
using TestSupport::FakeFileManager;
using TestSupport::FakeLaunchd;
using TestSupport::FakeMac;

namespace {

const std::string kBait = "/Users/alice/Documents/Bait";
const std::string kKept = "/Users/alice/Documents/Kept";

/// Where components lie: the product's places, what lies in them, and their repair copies.
const std::vector<std::string>& componentPlaces() {
    static const std::vector<std::string> kPlaces = [] {
        std::vector<std::string> places = Places::everything();
        for (const std::string& path : Places::everything()) {
            places.push_back(path + "/Contents/MacOS/program");
            places.push_back(path + "/.hidden");
            places.push_back(Places::repairCopy(path));
        }
        return places;
    }();
    return kPlaces;
}

/// Names that are almost the product's.
const std::vector<std::string>& decoyPlaces() {
    static const std::vector<std::string> kPlaces = [] {
        std::vector<std::string> places{"/Applications/Other.app", "/Library/LaunchDaemons/org.other.plist",
                                        "/Library/PrivilegedHelperTools/org.other.helper",
                                        "/Users/Shared/keep", "/Users/alice/Norvik"};
        for (const std::string& path : Places::everything()) {
            const std::size_t name = path.rfind('/') + 1;
            places.push_back(path + " 2");
            places.push_back(path.substr(0, name) + "." + path.substr(name));
            places.push_back(path.substr(0, path.size() - 1));
            std::string otherCase = path;
            otherCase[name] = static_cast<char>(otherCase[name] ^ 0x20);
            places.push_back(otherCase);
        }
        return places;
    }();
    return kPlaces;
}

std::vector<std::string> labels() {
    std::vector<std::string> all = Places::daemons();
    all.insert(all.end(), Places::agents().begin(), Places::agents().end());
    return all;
}

rc::Gen<Component> componentOf(const std::vector<std::string>& places) {
    return rc::gen::build<Component>(
        rc::gen::set(&Component::path, rc::gen::elementOf(places)),
        rc::gen::set(&Component::kind,
                     rc::gen::element(Kind::file, Kind::folder, Kind::folder, Kind::usersLink,
                                      Kind::rootsLink, Kind::danglingLink)));
}

rc::Gen<Refusal> refusal() {
    return rc::gen::build<Refusal>(
        rc::gen::set(&Refusal::item, rc::gen::inRange<std::size_t>(0, 500)),
        rc::gen::set(&Refusal::reason, rc::gen::element(EPERM, EACCES, EIO, EBUSY, EROFS)));
}

rc::Gen<RandomJob> job() {
    std::vector<std::string> known = labels();
    known.insert(known.end(), {"com.norvik.InstallerHelper", "com.norvik.fileaccessd2", "com.norvik.agent",
                               "org.other.daemon"});
    return rc::gen::build<RandomJob>(
        rc::gen::set(&RandomJob::job,
                     rc::gen::pair(rc::gen::element<std::string>("system", "gui/501", "gui/502", "gui/503"),
                                   rc::gen::elementOf(known))),
        rc::gen::set(&RandomJob::stuck, rc::gen::map(rc::gen::inRange(0, 5), [](int n) { return n == 4; })));
}

rc::Gen<RandomProcess> process() {
    std::vector<std::string> names = Places::processes();
    names.insert(names.end(), {"sentrel", "Sentrel2", "View Logs Helper", "Sentre", "Finder"});
    return rc::gen::build<RandomProcess>(
        rc::gen::set(&RandomProcess::name, rc::gen::elementOf(names)),
        rc::gen::set(&RandomProcess::canBeKilled,
                     rc::gen::map(rc::gen::inRange(0, 5), [](int n) { return n != 4; })));
}

rc::Gen<Platform::Users::Entry> user() {
    return rc::gen::element(
        Platform::Users::Entry{0, "/var/root"}, Platform::Users::Entry{0, "/Users/root"},
        Platform::Users::Entry{70, "/Library/WebServer"}, Platform::Users::Entry{501, "/Users/alice"},
        Platform::Users::Entry{502, "/Users/bob"}, Platform::Users::Entry{503, "/Users/Shared/carol"},
        Platform::Users::Entry{504, "/Volumes/Users/dave"});
}

void put(FakeFileManager& files, const std::string& path, FakeFileManager::Node node) {
    const std::string parent = path.substr(0, path.rfind('/'));
    for (std::string above = parent; !above.empty(); above = above.substr(0, above.rfind('/'))) {
        if (files.has(above) && files.at(above).kind != FakeFileManager::Node::Kind::folder) {
            return;
        }
    }
    files.addFolder(parent);
    files.nodes.try_emplace(path, std::move(node));
}

void put(FakeFileManager& files, const Component& component) {
    using Node = FakeFileManager::Node;
    switch (component.kind) {
        case Kind::file:
            return put(files, component.path, {Node::Kind::file, "", 0644, 501, 20, component.path});
        case Kind::folder:
            return put(files, component.path + "/inside", {Node::Kind::file, "", 0600, 0, 0, "inside"});
        case Kind::usersLink:
            return put(files, component.path, {Node::Kind::link, kBait, 0755, 501, 20});
        case Kind::rootsLink:
            return put(files, component.path, {Node::Kind::link, kKept, 0755, 0, 0});
        case Kind::danglingLink:
            return put(files, component.path, {Node::Kind::link, "/nowhere", 0755, 501, 20});
    }
}

void putPreciousFolders(FakeFileManager& files) {
    files.addFile(kKept + "/letter.txt", "keep");
    for (const char* name :
         {"View Logs.app", "Sentrel.app", "Agent.app", "SNT", "FileAccessDaemon", "AntiVir"}) {
        files.addFile(kBait + "/" + name + "/letter.txt", "keep");
    }
}

void putFiles(const RandomMac& random, FakeFileManager& files) {
    putPreciousFolders(files);
    for (const char* folder : {"/Applications", "/Library/LaunchDaemons", "/Library/LaunchAgents"}) {
        files.addFolder(folder);
    }
    for (const std::string& label : random.propertyLists) {
        for (const std::string& path :
             {Places::daemonPropertyList(label), Places::agentPropertyList(label)}) {
            put(files, path, {FakeFileManager::Node::Kind::file, "", 0644, 0, 0, label});
        }
    }
    for (const auto* list : {&random.components, &random.decoys}) {
        for (const Component& component : *list) {
            put(files, component);
        }
    }
    for (const Refusal& refusal : random.refusals) {
        const auto item =
            std::next(files.nodes.begin(), static_cast<std::ptrdiff_t>(refusal.item % files.nodes.size()));
        files.resisting[item->first] = refusal.reason;
    }
}

}  // namespace

rc::Gen<RandomMac> randomMac() {
    using rc::gen::container;
    using rc::gen::set;
    return rc::gen::build<RandomMac>(
        set(&RandomMac::components, container<std::vector<Component>>(componentOf(componentPlaces()))),
        set(&RandomMac::decoys, container<std::vector<Component>>(componentOf(decoyPlaces()))),
        set(&RandomMac::propertyLists, container<std::vector<std::string>>(rc::gen::elementOf(labels()))),
        set(&RandomMac::refusals, rc::gen::scale(0.1, container<std::vector<Refusal>>(refusal()))),
        set(&RandomMac::jobs, rc::gen::scale(0.3, container<std::vector<RandomJob>>(job()))),
        set(&RandomMac::users, rc::gen::scale(0.1, container<std::vector<Platform::Users::Entry>>(user()))),
        set(&RandomMac::sessions,
            rc::gen::scale(0.1, container<std::vector<std::uint32_t>>(rc::gen::element(501U, 502U, 503U)))),
        set(&RandomMac::processes, rc::gen::scale(0.2, container<std::vector<RandomProcess>>(process()))),
        set(&RandomMac::extension, rc::gen::element(Extension::absent, Extension::loaded, Extension::inUse)),
        set(&RandomMac::staysRoot, rc::gen::map(rc::gen::inRange(0, 8), [](int n) { return n == 7; })));
}

void furnish(const RandomMac& random, FakeMac& mac, FakeLaunchd& launchd) {
    putFiles(random, mac.files);
    launchd.sessions = {random.sessions.begin(), random.sessions.end()};
    for (const RandomJob& each : random.jobs) {
        launchd.jobs[each.job] = each.job.first + "/" + each.job.second + " = {}\n";
        if (each.stuck) {
            launchd.stuck.insert(each.job);
        }
    }
    mac.users.entries = random.users;
    mac.users.refusesChange = random.staysRoot;
    std::int32_t pid = 100;
    for (const RandomProcess& each : random.processes) {
        mac.processes.processes.push_back(
            {pid++, 501, each.name, "/Applications/" + each.name, each.canBeKilled});
    }
    mac.kernelExtensions.loaded.emplace();
    (*mac.kernelExtensions.loaded)["org.other.kext"] = false;
    if (random.extension != Extension::absent) {
        (*mac.kernelExtensions.loaded)[Places::kExtension] = random.extension == Extension::inUse;
    }
}

std::ostream& operator<<(std::ostream& out, const RandomMac& mac) {
    static constexpr const char* kKinds[] = {"file", "folder", "user's link", "root's link", "dangling link"};
    for (const auto* list : {&mac.components, &mac.decoys}) {
        for (const Component& component : *list) {
            out << (list == &mac.decoys ? "decoy " : "") << kKinds[static_cast<int>(component.kind)] << ' '
                << component.path << '\n';
        }
    }
    for (const std::string& label : mac.propertyLists) {
        out << "property lists of " << label << '\n';
    }
    FakeMac furnished;
    FakeLaunchd launchd(furnished);
    furnish(mac, furnished, launchd);
    for (const auto& [path, reason] : furnished.files.resisting) {
        out << "refused with " << reason << ": " << path << '\n';
    }
    for (const RandomJob& job : mac.jobs) {
        out << (job.stuck ? "stuck job " : "job ") << job.job.first << '/' << job.job.second << '\n';
    }
    for (const Platform::Users::Entry& user : mac.users) {
        out << "user " << user.uid << ' ' << user.home << '\n';
    }
    for (const std::uint32_t session : mac.sessions) {
        out << "session of " << session << '\n';
    }
    for (const RandomProcess& process : mac.processes) {
        out << (process.canBeKilled ? "process " : "process that cannot be killed ") << process.name << '\n';
    }
    return out << "extension " << static_cast<int>(mac.extension) << (mac.staysRoot ? ", stays root" : "");
}

}  // namespace RandomMacs
