// Programs that are not the uninstaller, and a client that does not behave.

#include <algorithm>
#include <sstream>

#include "Rows.h"
#include "TortureMac.h"

namespace Torture {

namespace {

/// The helper's memory may not pass this, whoever calls: so many connections are served at a time, each with
/// so much that waits.
constexpr long kMemoryCeiling = 256L << 10;

/// Everything that looks a little like the client, and belongs to somebody else.
constexpr const char* kMakeStrangers = R"(
set -e
app='/Volumes/Uninstall/Uninstall Sentrel.app'
program="$app/Contents/MacOS/Uninstall Sentrel"
cp "$program" /Users/alice/copy
cp -R "$app" /Users/alice/
for name in Link Soft; do
    mkdir -p /Users/alice/$name.app/Contents/MacOS
done
cp "$app/Contents/Info.plist" /Users/alice/Link.app/Contents/
ln -s "$app/Contents/Info.plist" /Users/alice/Soft.app/Contents/Info.plist
cp "$program" /Users/alice/Soft.app/Contents/MacOS/
chown -R -h alice /Users/alice
ln "$program" /Users/alice/Link.app/Contents/MacOS/ || cp "$program" /Users/alice/Link.app/Contents/MacOS/
cp -R "$app" /Applications/Stranger.app
mv "/Applications/Stranger.app/Contents/MacOS/Uninstall Sentrel" /Applications/Stranger.app/Contents/MacOS/Stranger
sed -i 's/com[.]NORVIK/org.stranger/g' /Applications/Stranger.app/Contents/Info.plist
cp -R "$app" /Applications/Open.app
chmod 777 /Applications/Open.app/Contents/MacOS
echo keep >/tmp/victim
chmod 777 /tmp/victim
)";

void countAll(Row& row, int round, const std::string& said) {
    std::istringstream lines(said);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string first;
        long kilobytes = 0;
        words >> first;
        if (first == "memory" && words >> kilobytes) {
            row.highest("most memory of the helper, KB", kilobytes);
            if (kilobytes == 0 || kilobytes > kMemoryCeiling) {
                row.lost(round, "the helper's memory came to " + std::to_string(kilobytes) + " KB");
            }
        } else if (first == "lost") {
            row.lost(round, line.substr(first.size() + 1));
        } else {
            row.count(first);
        }
    }
}

}  // namespace

void foreignPeers(Row& row) {
    constexpr int kPeersPerMac = 50;
    row.count("ceiling of its memory, KB", kMemoryCeiling);
    row.run(
        [&row](int round) {
            TortureMac mac(false);
            // Refused, because there is nothing to uninstall; the helper is blessed then.
            static_cast<void>(mac.uninstall());
            mac.putInUninstallersPlace("peer");
            const std::string crowd = kTools + "/peer-crowd " + std::to_string(kPeersPerMac) + " " +
                                      std::to_string(row.chance(round)() % 1'000'000);
            const std::string after = "echo remove >/tmp/target; " + quoted(kUninstaller) +
                                      " whole /tmp/target 20 || true; test ! -e /tmp/target || echo lost "
                                      "the helper did not serve the client afterwards";
            const auto result = mac.shellWith({}, kMakeStrangers + crowd + "; " + after);
            countAll(row, round, result.out);
            if (result.status != 0 || result.out.find("memory ") == std::string::npos) {
                row.lost(round, "the peers did not end well: " + result.err + mac.endOfLog());
            }
            if (!mac.exists("/tmp/victim")) {
                row.lost(round, "a stranger's list was executed");
            }
            for (const std::string& line : mac.messages("launchd")) {
                if (line.starts_with("Job com.norvik.InstallerHelper")) {
                    row.lost(round, line);
                }
            }
        },
        kPeersPerMac);
}

}  // namespace Torture
