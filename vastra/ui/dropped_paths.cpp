#include "vastra/ui/dropped_paths.h"

#include <QMimeData>
#include <QUrl>

#include "vastra/ui/text.h"

namespace vastra {

std::vector<CString> DroppedPaths(const QMimeData& data) {
  std::vector<CString> paths;
  for (const QUrl& url : data.urls())
    if (url.isLocalFile()) paths.push_back(FromScreen(url.toLocalFile()));
  return paths;
}

}  // namespace vastra
