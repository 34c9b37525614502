#pragma once

namespace Platform::Posix {

/// The moments of privileged file work between one look at an item and the next, at which somebody else may
/// swap the item.
enum class Moment {
    openingOnTheWay,   ///< a component of the way to an item is about to be opened
    readingLinkOnWay,  ///< the component turned out not to be a folder
    openingFolder,     ///< an entry that was listed as a folder is about to be opened
    removing,          ///< an entry is about to be unlinked
    removingFolder,    ///< a folder that has been emptied is about to be unlinked
    givingOwner,       ///< an entry is about to be opened for the change of its owner
    copying,           ///< a file is about to be opened for its copy
    climbing,          ///< ".." of a folder is about to be opened
    fillingFolder,     ///< a copy's folder was made and is about to be opened
};

/// Called at each of them with the open folder and the entry's name. Does nothing in the product: a test
/// program brings its own definition, which the linker takes before the library's.
void atMoment(Moment moment, int folder, const char* name);

}  // namespace Platform::Posix
