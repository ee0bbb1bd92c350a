#pragma once

// The delivered policy file: AES-256 in CBC mode, in chunks of 1 MiB that are each a message of
// their own; a chunk's clear text is UTF-8 and ends at its first NUL. Key and initial vector are
// made anew for each chunk from the small file `data.dat` below the common data folder. Nothing
// here logs, so that sigilctl can share it.
//
// A key source that is missing, empty or cannot be opened gives a key of 32 zero bytes; a wrong key
// is not noticed here. A key source of more than 33 bytes, which are the 32 digits of a digest and
// their terminator, throws CInvalidArgException, a read error on it CFileException.

#include "platform/mfc.h"

class CPolicyFileCipher {
 public:
  /// Bytes of a chunk; the last one of a file may have fewer.
  static constexpr INT_PTR kChunkSize = 0x100000;

  CPolicyFileCipher();

  /// Appends the clear text of the file at the full path `path` to `text`. 0: read to its end; 1:
  /// it could not be opened.
  int DecryptFile(const CString& path, CString& text) const;

  /// The clear text of one chunk, a multiple of 16 bytes.
  CString DecryptChunk(const CByteArray& cipher) const;
  /// `plain` gets the length of `cipher`.
  void DecryptChunkToBytes(const CByteArray& cipher, CByteArray& plain) const;

  /// The key of 32 bytes and the initial vector of 16 that every chunk goes by.
  void BuildKey(CByteArray& key, CByteArray& vector) const;

  /// As many bytes as the key source has, none when it cannot be opened.
  void BuildKeyMaterial(CByteArray& material) const;

  /// Copies `source` to the start of `target`. The key is folded this way: where `source` is the
  /// longer, its byte i is combined by XOR with byte i modulo the length of `target`.
  static void FoldBytes(const CByteArray& source, CByteArray& target);

  /// The MD5 digest (RFC 1321) of the text's ANSI form, as 32 upper-case hexadecimal digits; empty
  /// for an empty text or on failure. The length that is hashed is the text's count of UTF-16 units
  /// and not that of its ANSI bytes, so a text with double-byte characters is cut short. Delivered
  /// files are sealed this way.
  static CString HashHex(const CString& text);

  /// ANSI bytes with their terminator. 0, or 1 on failure.
  static int TextToAnsiBytes(const CString& text, CByteArray& bytes);

  /// The text of `bytes` up to the first NUL or their end; empty when the conversion gives none.
  static CString BytesToText(UINT codePage, const CByteArray& bytes);

 private:
  CString m_strKeySourcePath;  ///< Below the common data folder.
};
