// The SHA-256 of a package, remembered as long as its file certainly is the same.
#pragma once
#include "firmware/ByteRange.h"
#include "firmware/Sha256.h"

namespace GENAPI_NAMESPACE {

// Reads the whole package, unless it has been read before and its file has not been touched since: the same inode, size
// and time of change. A change within the same tick of the file system's clock would keep that time, so a file is only
// remembered once it has been left alone for a while. Whoever asks for ten texts of a large update file thus reads it
// once. May be used by several threads. Throws FileIOException.
Sha256::Digest packageDigest(const ByteRange& package);

}  // namespace GENAPI_NAMESPACE
