// SPDX-License-Identifier: MIT
#include "DocumentFile.h"

namespace kxmodel {

Status convert(ConvertOptions const& options) {
    DocumentFile file(options.in);
    return file.isWhole(options.isLossAccepted) ? file.write(options.out, options.to) : Status::Failed;
}

} // namespace kxmodel
