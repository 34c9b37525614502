// The page that sentrel-inspect explain writes, in a real browser.

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "InspectRun.h"
#include "SampleLog.h"

namespace InspectTest {

namespace {

using testing::HasSubstr;
using testing::Not;

class Page : public Inspect {
  protected:
    /// What the browser makes of a page of the test's folder: its document, and what it says on its console.
    struct Shown {
        std::string document;
        std::string console;
    };

    [[nodiscard]] Shown browse(const std::string& page, int width = 1000,
                               const std::string& more = "") const {
        const std::string command =
            "cd '" + path(".") + "' && HOME='" + path(".") +
            "' exec timeout 300 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
            "--disable-background-networking --disable-component-update --disable-sync "
            "--disable-dev-shm-usage "
            "--enable-logging=stderr --user-data-dir='" +
            path("browser") + "' --window-size=" + std::to_string(width) + ",900 " + more +
            " --dump-dom 'file://" + path(page) + "' 2>console </dev/null";
        FILE* const pipe = ::popen(command.c_str(), "r");
        Shown shown;
        std::array<char, 4096> buffer{};
        while (pipe != nullptr && std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) {
            shown.document += buffer.data();
        }
        EXPECT_EQ(pipe == nullptr ? -1 : ::pclose(pipe), 0) << read("console");
        shown.console = read("console");
        return shown;
    }

    void makePage(const std::vector<SampleEntry>& entries) const {
        EXPECT_EQ(inspect({"explain", "--html", "page.html"}, logOf(entries)).status, 0);
    }

    /// The page with a script that puts what it measures into the title.
    void measure(const std::string& expression) const {
        std::string page = read("page.html");
        const std::size_t policy = page.find("<meta http-equiv=\"Content-Security-Policy\"");
        ASSERT_NE(policy, std::string::npos);
        page.erase(policy, page.find('\n', policy) - policy);
        page.replace(page.find("</body>"), 0, "<script>document.title = " + expression + ";</script>");
        write("measured.html", page);
    }
};

constexpr const char* kConsole = ":CONSOLE";

TEST_F(Page, SaysNothingOnTheBrowsersConsole) {
    makePage(finishedRun());
    const Shown shown = browse("page.html");
    EXPECT_THAT(shown.document, HasSubstr("Deleting auxiliary helper tools..."));
    EXPECT_THAT(shown.console, Not(HasSubstr(kConsole)));
}

TEST_F(Page, HasAConsoleThatWouldSaySo) {
    write("broken.html", "<!DOCTYPE html><title>x</title><script>console.error('mistake')</script>");
    EXPECT_THAT(browse("broken.html").console, HasSubstr(kConsole));
}

TEST_F(Page, FitsAPhone) {
    std::vector<SampleEntry> entries = finishedRun();
    entries.insert(entries.begin() + 1, {0, kUninstaller, 18, std::string(400, 'W')});
    makePage(entries);
    measure(
        "document.documentElement.scrollWidth <= innerWidth ? 'fits' : 'too wide: ' + "
        "document.documentElement.scrollWidth + ' of ' + innerWidth");
    EXPECT_THAT(browse("measured.html", 500).document, HasSubstr("<title>fits</title>"));
}

TEST_F(Page, IsDarkInTheDark) {
    makePage(finishedRun());
    measure("getComputedStyle(document.body).backgroundColor");
    EXPECT_THAT(browse("measured.html").document, HasSubstr("<title>rgb(255, 255, 255)</title>"));
    EXPECT_THAT(browse("measured.html", 1000, "--force-dark-mode").document,
                HasSubstr("<title>rgb(28, 28, 30)</title>"));
}

TEST_F(Page, HidesTheStepsOfAnOutcomeThatIsNotTicked) {
    makePage(finishedRun());
    measure(
        "[...document.querySelectorAll('tr.rownotthere')].filter(row => row.offsetHeight > 0).length + ' of "
        "' + "
        "(document.getElementById('show1notthere').click(), "
        "[...document.querySelectorAll('tr.rownotthere')].filter(row => row.offsetHeight > 0).length)");
    EXPECT_THAT(browse("measured.html").document, HasSubstr("<title>73 of 0</title>"));
}

}  // namespace

}  // namespace InspectTest
