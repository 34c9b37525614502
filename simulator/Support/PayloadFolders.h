#pragma once

namespace Simulator {

/// The subfolders of a payload.
inline constexpr const char* kApplicationsFolder = "Applications";
inline constexpr const char* kLaunchdJobsFolder = "LaunchdJobs";
inline constexpr const char* kSupportFilesFolder = "SupportFiles";

}  // namespace Simulator
