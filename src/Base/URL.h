#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Base {

/// A file URL: one absolute path, held decoded.
///
/// The path is a byte string (UTF-8 by convention, but any byte except NUL is kept), begins with "/" and has
/// no trailing slash unless it is the root. No operation touches the disk, so a folder's URL looks like a
/// file's.
class URL {
  public:
    /// The URL of an absolute path. Repeated slashes inside are kept, trailing ones are dropped; an empty
    /// path becomes "/". A relative path is taken below "/".
    [[nodiscard]] static URL fileURL(std::string_view path);

    /// Reads the textual form of a file URL of any origin: scheme "file" (any case), an empty host or
    /// "localhost", an absolute path with %XX escapes. Returns nothing for another scheme or host, a broken
    /// escape, a NUL byte, a query, a fragment, or a "." or ".." component.
    [[nodiscard]] static std::optional<URL> parse(std::string_view text);

    /// The same for a `relative` text against an absolute `base` (RFC 3986, section 5.2, for file URLs): a
    /// text with a scheme stands for itself, one that begins with "/" replaces the path, any other replaces
    /// the part after the base's last slash. `baseIsFolder` tells whether the base's text ended in a slash.
    [[nodiscard]] static std::optional<URL> parse(std::string_view relative, const URL& base,
                                                  bool baseIsFolder);

    /// The decoded path, without a trailing slash.
    [[nodiscard]] const std::string& path() const { return path_; }

    /// The full form, as it is printed and archived: "file://" and the path with every byte escaped as %XX
    /// (upper-case) that a path must not hold literally. Example: file:///Library/Application%20Support.
    [[nodiscard]] std::string absoluteString() const;

    /// The part after the last slash; "/" for the root.
    [[nodiscard]] std::string lastPathComponent() const;

    /// The URL with `component` appended after exactly one slash. A component may itself contain slashes: a
    /// whole absolute path is mirrored below this one.
    [[nodiscard]] URL appendingPathComponent(std::string_view component) const;

    /// The URL with "." and `extension` appended to the last component.
    [[nodiscard]] URL appendingPathExtension(std::string_view extension) const;

    /// The parent's URL; the root is its own parent.
    [[nodiscard]] URL deletingLastPathComponent() const;

    friend bool operator==(const URL&, const URL&) = default;

  private:
    explicit URL(std::string path) : path_(std::move(path)) {}

    std::string path_;
};

}  // namespace Base
