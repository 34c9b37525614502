#pragma once

#import <Foundation/Foundation.h>

#include <vector>

#include "Base/Archive/Coder.h"

/// Which Objective-C class stands for which coded class. `carrierClass` (Carrier.h) adds to it; a process
/// only ever gains classes. Any thread.
namespace Platform::Darwin {

/// The coded class that `carrier` was made for; null when it is another class.
[[nodiscard]] const Base::CodedClass* codedClassOf(Class carrier);

/// Gives `carrier`, which is not registered yet, the instance methods of `model`.
void addMethods(Class carrier, Class model);

/// All coded classes that have an Objective-C class by now.
[[nodiscard]] std::vector<const Base::CodedClass*> registeredClasses();

}  // namespace Platform::Darwin
