#include "tests/layers/layer_rules.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

namespace fs = std::filesystem;

namespace zelayers {
namespace {

std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line.substr(0, line.find('#')));
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

// Depth-first search over a graph given as name -> successors, reporting every back edge as a cycle.
std::vector<std::string> FindCycles(const std::map<std::string, std::vector<std::string>>& graph) {
    enum class Mark { kNew, kOnPath, kDone };
    std::map<std::string, Mark> marks;
    std::vector<std::string> path, cycles;
    std::function<void(const std::string&)> visit = [&](const std::string& node) {
        marks[node] = Mark::kOnPath;
        path.push_back(node);
        const auto found = graph.find(node);
        if (found != graph.end()) {
            for (const std::string& next : found->second) {
                if (marks[next] == Mark::kOnPath) {
                    // Written from its smallest name, so a cycle reads the same wherever the search entered it.
                    std::vector<std::string> cycle(std::find(path.begin(), path.end(), next), path.end());
                    std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end()), cycle.end());
                    std::string text;
                    for (const std::string& name : cycle) text += name + " -> ";
                    cycles.push_back(text + cycle.front());
                } else if (marks[next] == Mark::kNew) {
                    visit(next);
                }
            }
        }
        path.pop_back();
        marks[node] = Mark::kDone;
    };
    for (const auto& entry : graph)
        if (marks[entry.first] == Mark::kNew) visit(entry.first);
    return cycles;
}

bool IsSource(const fs::path& file) {
    static const std::set<std::string> kEndings = {".h", ".hpp", ".c", ".cc", ".cpp"};
    return kEndings.count(file.extension().string()) != 0;
}

// The quoted include of a line, or "" when the line includes nothing or a system header.
std::string QuotedInclude(const std::string& line) {
    size_t pos = line.find_first_not_of(" \t");
    if (pos == std::string::npos || line[pos] != '#') return "";
    pos = line.find_first_not_of(" \t", pos + 1);
    if (pos == std::string::npos || line.compare(pos, 7, "include") != 0) return "";
    const size_t open = line.find('"', pos + 7);
    const size_t close = open == std::string::npos ? open : line.find('"', open + 1);
    return close == std::string::npos ? "" : line.substr(open + 1, close - open - 1);
}

}  // namespace

LayerTable LayerTable::Parse(const std::string& text, std::vector<std::string>& problems) {
    LayerTable table;
    std::istringstream in(text);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> words = Words(line);
        if (words.empty()) continue;
        table.standsOn[words[0]] = std::vector<std::string>(words.begin() + 1, words.end());
    }
    for (const auto& entry : table.standsOn)
        for (const std::string& below : entry.second)
            if (table.standsOn.count(below) == 0)
                problems.push_back(entry.first + " stands on " + below + ", which the table does not list");
    return table;
}

std::string LayerTable::FolderOf(const std::string& path) const {
    std::string best;
    for (const auto& entry : standsOn) {
        const std::string& folder = entry.first;
        if (path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
            path[folder.size()] == '/' && folder.size() > best.size())
            best = folder;
    }
    return best;
}

std::set<std::string> LayerTable::Reachable(const std::string& folder) const {
    std::set<std::string> seen;
    std::vector<std::string> pending = {folder};
    while (!pending.empty()) {
        const std::string current = pending.back();
        pending.pop_back();
        const auto found = standsOn.find(current);
        if (found == standsOn.end()) continue;
        for (const std::string& below : found->second)
            if (seen.insert(below).second) pending.push_back(below);
    }
    return seen;
}

std::vector<std::string> LayerTable::Cycles() const { return FindCycles(standsOn); }

bool LayerTable::Allows(const std::string& from, const std::string& to) const {
    return from == to || Reachable(from).count(to) != 0;
}

std::vector<std::string> WrongWayIncludes(const LayerTable& table, const std::string& root) {
    std::vector<std::string> found;
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const fs::path relative = fs::relative(entry.path(), root);
        if (!relative.empty() && relative.begin()->string().rfind(".", 0) == 0) continue;
        if (!relative.empty() && relative.begin()->string().rfind("build", 0) == 0) continue;
        if (entry.is_regular_file() && IsSource(entry.path())) files.push_back(relative);
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        const std::string includer = file.generic_string();
        const std::string from = table.FolderOf(includer);
        if (from.empty()) continue;
        std::ifstream in(fs::path(root) / file);
        for (std::string line; std::getline(in, line);) {
            const std::string target = QuotedInclude(line);
            if (target.empty()) continue;
            // Includes name paths from the tree's root; a bare name is a file beside the includer.
            std::string included = target;
            if (!fs::exists(fs::path(root) / target)) {
                const fs::path beside = file.parent_path() / target;
                if (!fs::exists(fs::path(root) / beside)) continue;  // not ours: a system or generated header
                included = beside.lexically_normal().generic_string();
            }
            const std::string to = table.FolderOf(included);
            if (to.empty())
                found.push_back(includer + " includes " + included + " (outside the module's folders)");
            else if (!table.Allows(from, to))
                found.push_back(includer + " includes " + included + " (" + from + " may not use " + to + ")");
        }
    }
    return found;
}

std::vector<LinkedLibrary> ParseLinkGraph(const std::string& text) {
    std::vector<LinkedLibrary> libraries;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> words = Words(line);
        if (words.size() < 2) continue;
        libraries.push_back({words[0], words[1], std::vector<std::string>(words.begin() + 2, words.end())});
    }
    return libraries;
}

std::vector<std::string> WrongWayLinks(const LayerTable& table, const std::vector<LinkedLibrary>& libraries) {
    std::vector<std::string> found;
    std::map<std::string, std::string> folderOf;
    std::map<std::string, std::vector<std::string>> graph;
    for (const LinkedLibrary& library : libraries) folderOf[library.name] = library.folder;
    for (const LinkedLibrary& library : libraries) {
        const std::string from = table.FolderOf(library.folder + "/");
        for (const std::string& link : library.links) {
            const auto other = folderOf.find(link);
            if (other == folderOf.end()) continue;  // a system library
            graph[library.name].push_back(link);
            const std::string to = table.FolderOf(other->second + "/");
            if (from.empty() || to.empty()) continue;  // tests, fuzz and bench may link anything
            if (!table.Allows(from, to))
                found.push_back(library.name + " links " + link + " (" + from + " may not use " + to + ")");
        }
    }
    for (const std::string& cycle : FindCycles(graph)) found.push_back("library cycle: " + cycle);
    return found;
}

}  // namespace zelayers
