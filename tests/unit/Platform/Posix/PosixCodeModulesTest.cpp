#include <dlfcn.h>
#include <gtest/gtest.h>

#include "Platform/Posix/PosixCodeModules.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Error;
using Platform::Posix::PosixCodeModules;

class CodeModules : public testing::Test {
  protected:
    std::optional<Error> load(const std::string& path, const std::string& symbol = "codeModuleAnswer") {
        return modules.load(Base::URL::fileURL(path), symbol, address);
    }
    /// The load fails with words about `word` and leaves the address.
    void expectFailure(const std::optional<Error>& error, const std::string& word) {
        ASSERT_TRUE(error);
        EXPECT_NE(error->description.find(word), std::string::npos) << error->description;
        EXPECT_EQ(error->code, 0);
        EXPECT_EQ(address, &untouched);
    }

    PosixCodeModules modules;
    int untouched = 0;
    void* address = &untouched;
};

TEST_F(CodeModules, GiveTheAddressOfAFunction) {
    ASSERT_EQ(load(CODE_MODULE), std::nullopt);
    auto* const answer = reinterpret_cast<int (*)()>(address);
    EXPECT_EQ(answer(), 1);
    ASSERT_EQ(load(CODE_MODULE), std::nullopt);
    EXPECT_EQ(reinterpret_cast<int (*)()>(address)(), 2) << "loaded twice, it is the same library";
}

TEST_F(CodeModules, KeepTheirSymbolsToThemselves) {
    ASSERT_EQ(load(CODE_MODULE), std::nullopt);
    EXPECT_EQ(::dlsym(RTLD_DEFAULT, "codeModuleAnswer"), nullptr);
}

TEST_F(CodeModules, ReportAMissingSymbol) {
    expectFailure(load(CODE_MODULE, "noSuchSymbol"), "noSuchSymbol");
}

TEST_F(CodeModules, ReportAFileThatIsNotALibrary) {
    const Scratch scratch;
    makeFile(scratch.path("text.so"), "no library");
    expectFailure(load(scratch.path("text.so")), "text.so");
    expectFailure(load(scratch.path("missing.so")), "missing.so");
    expectFailure(load(scratch.path()), scratch.path());
}

TEST_F(CodeModules, AreRefusedWhenAFunctionTheyNeedIsMissing) {
    expectFailure(load(BROKEN_CODE_MODULE), "functionThatNobodyHas");
}

}  // namespace
}  // namespace PlatformTests
