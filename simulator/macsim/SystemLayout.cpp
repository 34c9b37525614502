#include "macsim/SystemLayout.h"

#include <filesystem>

#include "Support/Files.h"

namespace Simulator {

namespace {

constexpr const char* kLsregister =
    "/System/Library/Frameworks/CoreServices.framework/Frameworks/LaunchServices.framework/Support/"
    "lsregister";

void buildFolders(MacBuilder& mac) {
    mac.folder("/Applications", {0775, 0, kAdminGroup});
    for (const char* name : {"LaunchDaemons", "LaunchAgents", "Extensions", "PrivilegedHelperTools",
                             "Services", "Application Support"}) {
        mac.folder(std::string("/Library/") + name);
    }
    for (const char* path : {"/Users", "/usr/local/bin", "/usr/local/lib", "/Volumes", "/var/db", "/var/log",
                             "/var/run", "/var/macsim/lib", "/proc", "/dev", "/sbin"}) {
        mac.folder(path);
    }
    mac.folder("/Users/Shared", {01777});
    mac.folder("/tmp", {01777});
    mac.folder("/var/tmp", {01777});
    mac.folder("/var/root", {0700});
    for (const char* name : {"etc", "tmp", "var"}) {
        mac.link(std::string("/private/") + name, std::string("../") + name);
    }
    for (const std::string& folder : borrowedFolders()) {
        mac.folder(folder);
    }
    mac.link("/lib", "usr/lib");
    mac.link("/lib64", "usr/lib64");
}

void buildTools(MacBuilder& mac) {
    mac.program("launchd", "/sbin/launchd");
    mac.program("launchctl", "/bin/launchctl");
    mac.program("installer", "/usr/sbin/installer");
    mac.program("lsregister", kLsregister);
    if (kHasDialogs) {
        mac.program("SecurityAgent", kSecurityAgent);
    }
    mac.program("libhelper-faults.so", std::string(kHelperFaultsLibrary));
    for (const char* name :
         {"[",     "bash", "cat",   "chmod", "cp",   "csh",   "dash", "date", "dd",    "df",     "echo",
          "ed",    "ksh",  "kill",  "ln",    "ls",   "mkdir", "mv",   "pax",  "ps",    "pwd",    "rm",
          "rmdir", "sh",   "sleep", "stty",  "sync", "tcsh",  "test", "true", "false", "unlink", "zsh"}) {
        const std::string tool = std::string("/usr/bin/") + name;
        std::error_code ignored;
        if (std::filesystem::exists(tool, ignored)) {
            mac.link(std::string("/bin/") + name, tool);
        }
    }
}

void buildUsers(MacBuilder& mac, const std::vector<User>& users) {
    std::string passwd =
        "root:x:0:0:System Administrator:/var/root:/bin/sh\n"
        "daemon:x:1:1:System Services:/var/root:/usr/bin/false\n"
        "nobody:x:65534:65534:Unprivileged User:/var/empty:/usr/bin/false\n"
        "_mdnsresponder:x:65:65:mDNSResponder:/var/empty:/usr/bin/false\n"
        "_www:x:70:70:World Wide Web Server:/Library/WebServer:/usr/bin/false\n"
        "_spotlight:x:89:89:Spotlight:/var/empty:/usr/bin/false\n";
    std::string members;
    std::string administrators;
    for (const User& user : users) {
        const std::string home = "/Users/" + user.name;
        passwd += user.name + ":x:" + std::to_string(user.uid) + ":" + std::to_string(kStaffGroup) + ":" +
                  user.name + ":" + home + ":/bin/sh\n";
        members += (members.empty() ? "" : ",") + user.name;
        administrators += user.administrator ? "," + user.name : "";
        for (const char* part : {"", "/Desktop", "/Documents", "/Library", "/Library/LaunchAgents"}) {
            mac.folder(home + part, {0700, user.uid, kStaffGroup});
        }
    }
    mac.file("/etc/passwd", passwd);
    mac.file("/etc/group", "wheel:x:0:root\ndaemon:x:1:root\ntty:x:5:\neveryone:x:12:\nstaff:x:20:root," +
                               members + "\nadmin:x:80:root" + administrators +
                               "\n_mdnsresponder:x:65:\n_www:x:70:\n_spotlight:x:89:\nnobody:x:65534:\n");
}

void buildSettings(MacBuilder& mac) {
    mac.file("/etc/nsswitch.conf", "passwd: files\ngroup: files\nshadow: files\nhosts: files\n");
    mac.file("/etc/hosts", "127.0.0.1\tlocalhost\n255.255.255.255\tbroadcasthost\n::1\tlocalhost\n");
    mac.file("/etc/shells", "/bin/sh\n/bin/bash\n");
    mac.file(std::string(kSystemLog), "", {0640, 0, kAdminGroup});
    if (const auto cache = readFile("/etc/ld.so.cache")) {
        mac.file("/etc/ld.so.cache", *cache);
    }
}

}  // namespace

const std::vector<std::string>& borrowedFolders() {
    // The last three are for programs with windows: fonts, and the places where their framework looks for its
    // parts.
    static const std::vector<std::string> folders{
        "/usr/bin",     "/usr/lib",          "/usr/lib64", "/usr/share",
        "/usr/libexec", "/etc/alternatives", "/etc/fonts", "/var/cache/fontconfig",
        "/etc/GNUstep"};
    return folders;
}

void buildSystem(MacBuilder& mac, const std::vector<User>& users) {
    buildFolders(mac);
    buildTools(mac);
    buildUsers(mac, users);
    buildSettings(mac);
}

}  // namespace Simulator
