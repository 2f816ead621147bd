#include "pipeline/EncodingAttempts.h"

#include <exception>
#include <optional>

namespace orvane::EncodingAttempts {
namespace {

PNGForm pngForm(bool lossless) { return lossless ? PNGForm::truecolor : PNGForm::palette; }

std::optional<Bytes> encodeAlternative(EncodingPlan plan, const Encoder& encode) try {
  if (plan.losslessCandidate) {
    plan.mode = EncodingPlan::Lossless{};
  } else {
    plan.mode = EncodingPlan::Lossy{plan.losslessQuality};
  }
  return encode(plan, pngForm(plan.losslessCandidate));
} catch (const std::exception&) {
  return std::nullopt;
}

}  // namespace

Bytes encodeSmallest(const EncodingPlan& plan, const Encoder& encode) {
  Bytes primary = encode(plan, pngForm(plan.preferLossless));
  if (plan.singlePass) return primary;
  std::optional<Bytes> alternative = encodeAlternative(plan, encode);
  if (alternative && alternative->size() < primary.size()) return std::move(*alternative);
  return primary;
}

}  // namespace orvane::EncodingAttempts
