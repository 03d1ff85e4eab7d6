#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

/// A folder that lives as long as the object.
class TemporaryFolder {
  public:
    explicit TemporaryFolder(std::string const &parent = "/tmp") {
        std::string name = parent + "/webconfig-test.XXXXXX";
        if (!::mkdtemp(name.data()))
            throw std::runtime_error("cannot make " + name);
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(TemporaryFolder const &) = delete;
    TemporaryFolder &operator=(TemporaryFolder const &) = delete;

    std::string const &Path() const { return path_; }
    std::string operator/(std::string const &name) const { return path_ + '/' + name; }

    /// Makes a file and returns its path.
    std::string File(std::string const &name, std::string const &content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
        return *this / name;
    }

  private:
    std::string path_;
};

inline std::string ContentOf(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
