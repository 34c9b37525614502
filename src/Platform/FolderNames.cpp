#include "Platform/FolderNames.h"

namespace Platform {

Base::URL FolderNames::folder(StandardFolder purpose) {
    switch (purpose) {
        case StandardFolder::applications:
            return Base::URL::fileURL("/Applications");
        case StandardFolder::applicationSupport:
            return Base::URL::fileURL("/Library/Application Support");
        case StandardFolder::users:
            return Base::URL::fileURL("/Users");
    }
    return Base::URL::fileURL("/");
}

const SystemPorts& folderNamesOnly() {
    static FolderNames names;
    static const SystemPorts ports{.log = nullptr,
                                   .files = nullptr,
                                   .folders = names,
                                   .tasks = nullptr,
                                   .processes = nullptr,
                                   .users = nullptr,
                                   .kernelExtensions = nullptr,
                                   .authorization = nullptr,
                                   .serviceManagement = nullptr,
                                   .xpc = nullptr,
                                   .bundles = nullptr,
                                   .clock = nullptr,
                                   .dispatch = nullptr,
                                   .distantObjects = nullptr,
                                   .codeModules = nullptr,
                                   .privateCopies = nullptr,
                                   .termination = nullptr};
    return ports;
}

}  // namespace Platform
