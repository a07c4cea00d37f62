// Builds a data folder for the module: settings, catalog and template files.
#pragma once
#include <string>
#include <vector>
#include "../unit/TestSupport.h"

struct TakeSpec {
    std::string teeth;
    int sensor = 1;
    int vertical = 0;
    int x = 100, y = 100;
    int holder = 1;
};

class Catalog {
public:
    Catalog();
    const std::string& base() const { return m_dir.path(); }  // what Initialize gets
    std::string ini() const { return m_dir.path() + "Template\\Zemblax.ini"; }
    std::string folder() const { return m_dir.path() + "Template\\"; }
    // Adds "Template<n>" with its takes; a deleted entry gets Deleted=1.
    void AddTemplate(int n, const std::string& name, const std::vector<TakeSpec>& takes,
                     bool deleted = false);
    void Set(const char* section, const char* key, const std::string& value);

private:
    testing_support::ScratchDir m_dir;
};

// Three takes: 18,17,16 horizontal; 11,21 vertical; 36,37 horizontal.
std::vector<TakeSpec> ThreeTakes();
