// Names of object identifiers: the library's registry, and those in common use that it lacks.
#pragma once

#include <string>
#include <vector>

namespace tool {

/// An identifier that the registry lacks, or another name of one that it has.
struct OidName {
    const char *short_name;
    const char *long_name;
    const char *dotted;
};

/// The name of a dotted text; null when the list has none.
[[nodiscard]] const OidName *find_oid_name(const std::string &dotted);

/// What a text names: rows of the registry by index, and entries of the list.
struct OidMatches {
    std::vector<int32_t> rows;
    std::vector<const OidName *> names;
    [[nodiscard]] bool empty() const { return rows.empty() && names.empty(); }
};

/// The row or the entry that a text names exactly: an index, a dotted text, a short name or else a long name.
/// Without one, all whose names are the text but for case; without these, all whose names have it as a part.
[[nodiscard]] OidMatches find_oids(const std::string &text);

}  // namespace tool
