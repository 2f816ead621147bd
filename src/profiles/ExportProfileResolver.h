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

/// Where a run's settings come from: explicit options, else a stored profile, else JPEG at 75 with
/// no folder.
namespace ExportProfileResolver {

struct Resolution {
  ImageFormat format = ImageFormat::jpeg;
  double quality = 75;
  std::optional<FileURL> outputDirectory;

  bool operator==(const Resolution&) const = default;
};

/// The profile is the first of that name or, without a name, the first marked as default. Each
/// setting is merged on its own. Throws ProfileNotFoundError.
Resolution resolve(const std::optional<std::string>& profileName,
                   std::optional<double> explicitQuality, std::optional<ImageFormat> explicitFormat,
                   const std::optional<FileURL>& explicitOutputDirectory);

}  // namespace ExportProfileResolver
}  // namespace orvane
