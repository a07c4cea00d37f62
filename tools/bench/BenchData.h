// Data folders for the benchmark: the shipped settings with a catalog of
// generated templates, their take files and 200 x 150 thumbnails.
#pragma once
#include <string>

class BenchData {
public:
    // `settings`: the shipped Zemblax.ini; `root`: a folder for the bases.
    BenchData(std::string settings, std::string root);
    // A base folder (with Template\ inside) whose catalog lists `count`
    // templates of `takes` takes each; the first template has `firstTakes`.
    std::string Base(const std::string& name, int count, int takes, int firstTakes) const;
    // Every thumbnail of a base, for a floor that loads the same files.
    static std::string Thumbnail(const std::string& base, int number);

private:
    std::string m_settings, m_root;
};
