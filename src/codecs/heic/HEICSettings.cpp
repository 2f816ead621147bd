#include "codecs/heic/HEICSettings.h"

#include <cmath>
#include <cstdint>

#include "codecs/QualityTable.h"

namespace orvane::HEICSettings {
namespace {

/// Alpha at this quantisation parameter is rarely off by more than one.
constexpr int alphaQuantizer = 10;

/// Whether each row begins with the probabilities that the row above has after two blocks, so that
/// threads can share the picture. The bytes depend on that, but not on the number of threads.
bool hasWavefronts(Size size) {
  constexpr std::int64_t leastPixels = 1'000'000;
  return std::int64_t{size.width} * size.height >= leastPixels;
}

/// Every decoder takes 4:2:0 as Main Still Picture; monochrome makes x265 declare the format range
/// extensions by itself.
X265Library::Param stillPicture(Size size, int chromaFormat) {
  X265Library::Param param = X265Library::makeParam("medium", "ssim", "mainstillpicture");
  param->sourceWidth = size.width;
  param->sourceHeight = size.height;
  param->internalCsp = chromaFormat;
  param->fpsNum = 1;
  param->fpsDenom = 1;
  param->totalFrames = 1;
  param->bRepeatHeaders = 1;
  param->bAnnexB = 0;
  param->bEmitInfoSEI = 0;
  param->logLevel = X265_LOG_NONE;
  param->frameNumThreads = 1;
  param->bEnableWavefront = hasWavefronts(size) ? 1 : 0;
  X265Library::setOption(*param, "pools", "none");
  return param;
}

/// These settings take a third less time for photographs at the same size and score: x265 chooses
/// modes by an estimate, in blocks of at most 32 pixels, without psy-rd or residuals that are not
/// transformed, and writes signs as they are. Sample offsets cost score.
void setForPhotographs(x265_param& param) {
  param.rdLevel = 1;
  param.maxCUSize = 32;
  param.bEnableSignHiding = 0;
  param.bEnableSAO = 0;
}

}  // namespace

int rateFactorInHundredths(double quality) {
  return static_cast<int>(std::round(settingAt(QualityTables::heicRateFactor(), quality) * 100));
}

/// These settings give the best SSIMULACRA 2 score for size and time: choosing coefficients by
/// their cost is all that slower presets gain by; adaptive quantisation is gentler than the
/// preset's; chroma is finer; deblocking leaves detail alone; and residuals without a transform
/// suit text and drawings.
X265Library::Param forColor(Size size, double rateFactor, bool isPhotograph) {
  X265Library::Param param = stillPicture(size, X265_CSP_I420);
  param->rc.rateControlMode = X265_RC_CRF;
  param->rc.rfConstant = std::floor(rateFactor);  // x265 drops the fraction in any case
  param->rc.aqMode = X265_AQ_VARIANCE;
  param->rc.aqStrength = 0.8;
  param->psyRd = 1.0;
  param->rdoqLevel = 2;
  param->bEnableTransformSkip = 1;
  param->bEnableTSkipFast = 1;
  param->cbQpOffset = -6;
  param->crQpOffset = -6;
  param->deblockingFilterTCOffset = -1;
  param->deblockingFilterBetaOffset = -1;
  if (isPhotograph) setForPhotographs(*param);
  return param;
}

X265Library::Param forAlpha(Size size) {
  X265Library::Param param = stillPicture(size, X265_CSP_I400);
  param->rc.rateControlMode = X265_RC_CQP;
  param->rc.qp = alphaQuantizer;
  param->bEnableLoopFilter = 0;
  return param;
}

}  // namespace orvane::HEICSettings
