#pragma once

#include "convert/proof/Receipt.h"
#include "support/base/FileStamp.h"

#include <QString>

/// What was found when an output was compared with its source and was whole: an extended attribute of the
/// output, so that the record is where the output is, for each machine that sees it, and goes with it. Any
/// thread.
namespace proofrecord {

/// The extended attribute.
inline constexpr const char* kName = "user.ravelin.proof";

/// `source`: as it was when it was compared. `receipt` is that of a whole output. Returns false where there
/// are no attributes.
bool write(const QString& output, const FileStamp& source, const Receipt& receipt);

enum class Finding {
    None,           ///< There is no record.
    Whole,          ///< Both files are as they were.
    OutputChanged,  ///< Since it was compared.
    OtherSource,    ///< The output is that of a source of another size.
    SourceTouched,  ///< The source has its size, but was written or copied since.
};
struct Found {
    Finding finding = Finding::None;
    Receipt receipt;  ///< Of a whole output: the numbers of its tracks.
};
Found read(const QString& output, const QString& source);

}  // namespace proofrecord
