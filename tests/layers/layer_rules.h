// The layer rules of the source tree: a table of which folder stands on which, checked against every
// #include of the tree and every link between the project's libraries.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace zelayers {

struct LayerTable {
    // folder -> the folders it names directly
    std::map<std::string, std::vector<std::string>> standsOn;

    // Parses the table's text: one folder a line, then the folders it stands on; '#' starts a comment.
    // Lines naming an unknown folder on their right side are reported in `problems`.
    static LayerTable Parse(const std::string& text, std::vector<std::string>& problems);

    // The folder of the table that a path (relative to the tree's root) belongs to, or "" when none.
    std::string FolderOf(const std::string& path) const;
    // Everything `folder` may use: the folders it names and, through them, all below.
    std::set<std::string> Reachable(const std::string& folder) const;
    // One text per cycle found, such as "avi -> dv -> avi".
    std::vector<std::string> Cycles() const;
    // True when a file of `from` may use a file of `to`.
    bool Allows(const std::string& from, const std::string& to) const;
};

// Every quoted #include of the C and C++ files below `root` whose target lies in a folder that the
// including file's folder may not use: "avi/x.cpp includes reader/y.h (avi may not use reader)".
std::vector<std::string> WrongWayIncludes(const LayerTable& table, const std::string& root);

// One library of the build: its name, the folder its sources are in, the libraries it links.
struct LinkedLibrary {
    std::string name;
    std::string folder;
    std::vector<std::string> links;
};

// The link graph the build writes at configure time: "name folder link link ..." a line.
std::vector<LinkedLibrary> ParseLinkGraph(const std::string& text);

// Links that point the wrong way between layers, and cycles between libraries.
std::vector<std::string> WrongWayLinks(const LayerTable& table, const std::vector<LinkedLibrary>& libraries);

}  // namespace zelayers
