#pragma once

#include <cppcms/json.h>

#include <memory>
#include <optional>
#include <string>

namespace cppcms::http {
class file;
}

namespace webconfig::apps {

/// An upload that waits for the operator's word, from one request to the next: a private file in the folder
/// for uploads, which only the request with its token finds. There is one at most. It goes when it is
/// dropped, when it is old, and when the service starts.
class KeptUpload {
  public:
    /// \a settings are those of the service.
    explicit KeptUpload(cppcms::json::value const &settings);

    /// Keeps \a upload in the place of the one before. Returns its token: one that leads nowhere, which is
    /// logged, where there is no room.
    std::string Keep(cppcms::http::file &upload) const;
    /// Its content; nothing where no upload has \a token any more.
    std::optional<std::string> Read(std::string const &token) const;
    void Drop() const;
    void DropOld() const;

  private:
    template <typename Wanted>
    void _Remove(Wanted wanted) const;

    std::string const _folder;
};

}  // namespace webconfig::apps
