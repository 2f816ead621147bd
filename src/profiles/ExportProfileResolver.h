#pragma once

#include <optional>
#include <string>

#include "picture/ImageFormat.h"
#include "platform/foundation/FileURL.h"
#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// No stored profile has the name that the user gave.
class ProfileNotFoundError : public LocalizedError {
 public:
  explicit ProfileNotFoundError(std::string name);

  /// As the user gave it.
  const std::string& name() const noexcept { return name_; }

 private:
  std::string name_;
};

/// Settles a run's settings: explicit options, else a stored profile, else JPEG at 75 without a
/// folder.
namespace ExportProfileResolver {

struct Resolution {
  ImageFormat format = ImageFormat::jpeg;
  double quality = 75;
  std::optional<FileURL> outputDirectory;

  bool operator==(const Resolution&) const = default;
};

/// Uses the first profile of that name or, without a name, the first one marked as default. Each
/// setting is resolved on its own. Throws ProfileNotFoundError.
Resolution resolve(const std::optional<std::string>& profileName,
                   std::optional<double> explicitQuality, std::optional<ImageFormat> explicitFormat,
                   const std::optional<FileURL>& explicitOutputDirectory);

}  // namespace ExportProfileResolver
}  // namespace orvane
