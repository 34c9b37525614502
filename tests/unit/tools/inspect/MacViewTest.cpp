#include "MacView.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/FakeInspection.h"
#include "support/Scratch.h"

namespace {

using Inspect::MacView;
using PlatformTests::makeFile;
using PlatformTests::makeFolder;

/// A folder that looks like a Mac's root.
class View : public testing::Test {
  protected:
    View() {
        makeFolder(folder.path("Applications"));
        makeFolder(folder.path("Library"));
    }

    /// The root of the view, or why there is none.
    static std::string rootOf(const std::optional<std::string>& root) {
        std::string why;
        const auto view = MacView::make(root, why);
        EXPECT_EQ(view == nullptr, !why.empty()) << why;
        return view ? view->root() : why;
    }

    PlatformTests::Scratch folder;
};

TEST_F(View, IsOfThisMacWithoutARoot) {
    EXPECT_EQ(rootOf(std::nullopt), "");
    EXPECT_EQ(rootOf("/"), "");
}

// A link leads where it leads only on the Mac that runs.
TEST_F(View, FollowsLinksOfThisMacOnly) {
    makeFile(folder.path("Library/a"));
    PlatformTests::makeLink("Library", folder.path("link"));
    const auto finds = [](const std::optional<std::string>& root, const std::string& path) {
        std::string why;
        Platform::Error error;
        return MacView::make(root, why)->files().look(Base::URL::fileURL(path), error).has_value();
    };
    EXPECT_TRUE(finds(std::nullopt, folder.path("link/a")));
    EXPECT_TRUE(finds(folder.path(), "/Library/a"));
    EXPECT_FALSE(finds(folder.path(), "/link/a"));
}

TEST_F(View, IsOfAFolderByItsWholePath) {
    EXPECT_EQ(rootOf(folder.path()), folder.path());
    EXPECT_EQ(rootOf(folder.path() + "/"), folder.path());
    EXPECT_EQ(rootOf(folder.path() + "///"), folder.path());
    const auto relative = std::filesystem::relative(folder.path()).string();
    EXPECT_EQ(rootOf(relative), std::filesystem::current_path().string() + "/" + relative);
}

TEST_F(View, NeedsTheFoldersOfAMac) {
    const std::string path = folder.path();
    std::filesystem::remove(folder.path("Library"));
    EXPECT_EQ(rootOf(path + "/"), path + "/: is not the root folder of a Mac: it has no folder Library");
    makeFile(folder.path("Library"));
    EXPECT_EQ(rootOf(path), path + ": is not the root folder of a Mac: it has no folder Library");
    std::filesystem::remove(folder.path("Applications"));
    EXPECT_EQ(rootOf(path), path + ": is not the root folder of a Mac: it has no folder Applications");
    EXPECT_EQ(rootOf("no\nsuch"),
              "no\\x0asuch: is not the root folder of a Mac: it has no folder Applications");
}

TEST_F(View, SeesTheFilesOfItsFolder) {
    makeFolder(folder.path("Applications/Sentrel.app"));
    makeFile(folder.path("Applications/Sentrel.app/one"), "12345");
    makeFolder(folder.path("Library/Services"));
    makeFile(folder.path("Library/Services/Scan with Sentrel.workflow"), "123");
    std::string why;
    const auto view = MacView::make(folder.path(), why);
    ASSERT_NE(view, nullptr) << why;
    Platform::Error error;
    EXPECT_EQ(view->files().look(Base::URL::fileURL("/Applications/Sentrel.app/one"), error)->bytes, 5U);
    Inventory::Inventory inventory;
    inventory.places.resize(2);
    inventory.places[0].paths = {"/Applications/Sentrel.app", "/no/other/spelling"};
    inventory.places[1].paths = {"/Library/Services/Scan with Sentrel.workflow"};
    const auto sizes = view->sizesOf(inventory);
    ASSERT_EQ(sizes.size(), 2U);
    EXPECT_EQ(sizes[0].files, 1U);
    EXPECT_EQ(sizes[1].files, 1U);
    EXPECT_EQ(sizes[1].bytes, 3U);
}

TEST(ContentsOfPlaces, AreCountedOneAfterTheOther) {
    TestSupport::FakeFileFacts files;
    files.add("/one/a", Platform::ItemKind::file, 5);
    files.add("/one/b", Platform::ItemKind::file, 6);
    files.add("/two", Platform::ItemKind::file, 7);
    files.add("/three/c", Platform::ItemKind::file, 8);
    std::vector<Inventory::Place> places(3);
    places[0].paths = {"/one", "/two"};
    places[1].paths = {"/two"};
    places[2].paths = {"/three"};
    std::vector<std::uint64_t> counts;
    const auto sizes =
        Inspect::contentsOf(places, files, [&counts](std::uint64_t count) { counts.push_back(count); });
    EXPECT_EQ(sizes,
              (std::vector<Platform::TreeSize>{{2, 1, 0, 0, 11, 0}, {1, 0, 0, 0, 7, 0}, {1, 1, 0, 0, 8, 0}}));
    EXPECT_EQ(counts, (std::vector<std::uint64_t>{2, 3, 4}));
}

TEST(OwnVersion, IsTheProgramsShortVersionAndItsBuild) {
    const std::string version = SENTREL_VERSION;
    EXPECT_EQ(Inspect::ownVersion().shortVersion, version.substr(0, version.rfind('.')));
    EXPECT_EQ(Inspect::ownVersion().build, SENTREL_BUILD);
}

}  // namespace
