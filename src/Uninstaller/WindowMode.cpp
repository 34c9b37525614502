#include "Uninstaller/WindowMode.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Base/Displayable.h"
#include "Base/FatalError.h"
#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "Platform/SystemPorts.h"
#include "Uninstaller/LocalizedText.h"

namespace Uninstall_Sentrel {

namespace {

constexpr const char* kInterfaceTable = "Interface";
constexpr const char* kWindowLibrary = "UninstallerWindow.dylib";

/// The interface's texts if its table is missing; a window without words would help nobody.
constexpr std::array<std::pair<std::string_view, std::string_view>, 8> kPlainTexts{
    {{"headline", "Uninstall"},
     {"label", "%@ will be removed from this Mac."},
     {"uninstall", "Uninstall"},
     {"cancel", "Cancel"},
     {"duration", "This can take up to a minute."},
     {"about", "About Uninstall Sentrel"},
     {"hide", "Hide Uninstall Sentrel"},
     {"quit", "Quit Uninstall Sentrel"}}};

std::unique_ptr<Platform::Bundle> mainBundle() {
    return Platform::SystemPorts::current().bundles->mainBundle();
}

Base::URL frameworksOf(const Base::URL& bundle) {
    return bundle.appendingPathComponent("Contents/Frameworks");
}

void sayNoWindow(const std::string& why) {
    std::fprintf(stderr, "The window cannot be shown: %s\nTo uninstall without a window: sudo %s --silent\n",
                 Base::displayable(why).c_str(), "\"Uninstall Sentrel\"");
}

ApplicationFramework* loadFramework(std::string& error) {
    void* address = nullptr;
    const Base::URL library = frameworksOf(mainBundle()->url()).appendingPathComponent(kWindowLibrary);
    if (const std::optional<Platform::Error> failure = Platform::SystemPorts::current().codeModules->load(
            library, kApplicationFrameworkSymbol, address)) {
        error = failure->description;
        return nullptr;
    }
    ApplicationFrameworkEntry* entry = nullptr;
    static_assert(sizeof entry == sizeof address);
    std::memcpy(&entry, &address, sizeof entry);
    return entry(&error);
}

}  // namespace

WindowProgram::WindowProgram(ApplicationFramework& framework)
    : framework_(framework), delegate_(std::make_shared<AppDelegate>(framework)) {}

std::string WindowProgram::interfaceText(const std::string& key) const {
    for (const auto& [plainKey, plainText] : kPlainTexts) {
        if (plainKey == key) {
            return localizedText(key, kInterfaceTable, plainText);
        }
    }
    Base::fatalError("The interface has no text \"" + key + "\".");
}

std::string WindowProgram::resourcePath(const std::string& name, const std::string& type) const {
    const std::optional<Base::URL> resource = mainBundle()->resource(name, type);
    return resource ? resource->path() : std::string();
}

std::vector<std::string> WindowProgram::frameworkFolders() const {
    const NorvikCommon::ApplicationInfo product = NorvikCommon::ComponentPathProvider::managementConsole();
    return {frameworksOf(mainBundle()->url()).path(), frameworksOf(*product.bundle->location).path()};
}

std::string WindowProgram::version() const {
    const std::unique_ptr<Platform::Bundle> bundle = mainBundle();
    const std::string shortVersion = bundle->infoString("CFBundleShortVersionString").value_or("");
    const std::string build = bundle->infoString("CFBundleVersion").value_or("");
    return build.empty() || build == shortVersion ? shortVersion : shortVersion + " (" + build + ")";
}

WindowController* WindowProgram::interfaceDidLoad(Outlets outlets) {
    delegate_->setWindow(outlets.window);
    controller_ = std::make_unique<UninstallerWindowController>(framework_, std::move(outlets));
    controller_->awakeFromNib();
    return controller_.get();
}

void WindowProgram::applicationDidFinishLaunching() {
    delegate_->applicationDidFinishLaunching();
}

bool WindowProgram::applicationShouldTerminate() {
    return delegate_->applicationShouldTerminate();
}

bool WindowProgram::windowShouldClose() {
    return controller_ == nullptr || controller_->windowShouldClose();
}

void WindowProgram::uninstallAction() {
    if (controller_ != nullptr) {
        controller_->uninstallAction();
    }
}

void WindowProgram::cancelAction() {
    if (controller_ != nullptr) {
        controller_->cancelAction();
    }
}

void runApplication(ApplicationFramework& framework, int argc, char* argv[]) {
    // Lives until the process ends: the connection's thread may still report then.
    static auto* const program = new std::unique_ptr<WindowProgram>;
    *program = std::make_unique<WindowProgram>(framework);
    framework.applicationMain(argc, argv, **program);
    Application* application = framework.sharedApplication();
    if (application == nullptr) {
        Base::fatalError("There is no application.");
    }
    application->run();
}

void runWindowApplication(int argc, char* argv[]) {
    std::string error;
    if (ApplicationFramework* framework = loadFramework(error); framework != nullptr) {
        runApplication(*framework, argc, argv);
    } else {
        sayNoWindow(error);
    }
}

}  // namespace Uninstall_Sentrel
