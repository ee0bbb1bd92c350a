#include "policy/policy_file_cipher.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "host/folders.h"
#include "platform/codepage.h"
#include "platform/crt.h"
#include "platform/crypt.h"
#include "platform/owner.h"
#include "policy/aes.h"

namespace {

constexpr INT_PTR kKeySize = 32;
constexpr INT_PTR kVectorSize = 16;
constexpr INT_PTR kDigestSize = 16;
constexpr INT_PTR kWorkBufferSize = 2048;

constexpr auto kCloseStream = [](std::FILE* stream) { std::fclose(stream); };
constexpr auto kReleaseProvider = [](HCRYPTPROV provider) { CryptReleaseContext(provider, 0); };
constexpr auto kDestroyHash = [](HCRYPTHASH hash) { CryptDestroyHash(hash); };

/// Fills the chunk from its start. Returns the number of bytes read, which is less than a chunk
/// only at the end of the file.
INT_PTR ReadChunk(std::FILE* file, CByteArray& chunk) {
  BYTE* const bytes = chunk.GetData();
  INT_PTR count = 0;
  for (; count < CPolicyFileCipher::kChunkSize; ++count) {
    const int byte = std::fgetc(file);
    if (byte == EOF) break;
    bytes[count] = static_cast<BYTE>(byte);
  }
  return count;
}

/// Computes the MD5 digest (RFC 1321) of the bytes. Returns false when the cryptographic service
/// fails.
bool Digest(const BYTE* bytes, DWORD count, BYTE (&digest)[kDigestSize]) {
  Owner<HCRYPTPROV, kReleaseProvider> provider;
  Owner<HCRYPTHASH, kDestroyHash> hash;
  DWORD size = kDigestSize;
  return CryptAcquireContextW(provider.Out(), nullptr, nullptr, PROV_RSA_FULL,
                              CRYPT_VERIFYCONTEXT | CRYPT_MACHINE_KEYSET) &&
         CryptCreateHash(provider.Get(), CALG_MD5, 0, 0, hash.Out()) &&
         CryptHashData(hash.Get(), bytes, count, 0) &&
         CryptGetHashParam(hash.Get(), HP_HASHVAL, digest, &size, 0);
}

/// Puts the digits in order on the even positions of the material, then on the odd ones. Material
/// with more positions than there are digits raises CInvalidArgException.
void Spread(const CByteArray& digits, CByteArray& material) {
  INT_PTR taken = 0;
  for (const INT_PTR first : {0, 1}) {
    for (INT_PTR position = first; position < material.GetSize(); position += 2)
      material[position] = digits[taken++];
  }
}

void Fold(const CByteArray& material, INT_PTR size, CByteArray& target) {
  target.SetSize(size);
  CPolicyFileCipher::FoldBytes(material, target);
}

}  // namespace

CPolicyFileCipher::CPolicyFileCipher()
    : m_strKeySourcePath(CString(kClientFolder) + kKeySourceName) {}

int CPolicyFileCipher::DecryptFile(const CString& path, CString& text) const {
  CFileStatus status;
  if (!CFile::GetStatus(path, status)) return 1;
  Owner<std::FILE*, kCloseStream> file;
  if (crt::_wfopen_s(file.Out(), path, L"rb") != 0) return 1;

  CByteArray chunk;
  for (bool ended = false; !ended;) {
    chunk.RemoveAll();
    chunk.SetSize(kChunkSize);
    const INT_PTR count = ReadChunk(file.Get(), chunk);
    if (count == 0) break;
    // The last chunk is filled with zeros, which are decrypted too.
    text += DecryptChunk(chunk);
    ended = count < kChunkSize;
  }
  return 0;
}

CString CPolicyFileCipher::DecryptChunk(const CByteArray& cipher) const {
  CByteArray plain;
  DecryptChunkToBytes(cipher, plain);
  return BytesToText(CP_UTF8, plain);
}

void CPolicyFileCipher::DecryptChunkToBytes(const CByteArray& cipher, CByteArray& plain) const {
  CByteArray key;
  CByteArray vector;
  BuildKey(key, vector);

  AesContext context;
  AesSetDecryptKey(key.GetData(), static_cast<int>(kKeySize), &context);
  plain.RemoveAll();
  plain.SetSize(cipher.GetSize());
  AesCbcDecrypt(cipher.GetData(), plain.GetData(), static_cast<int>(cipher.GetSize()),
                vector.GetData(), &context);
}

void CPolicyFileCipher::BuildKey(CByteArray& key, CByteArray& vector) const {
  CByteArray material;
  BuildKeyMaterial(material);
  Fold(material, kKeySize, key);
  Fold(material, kVectorSize, vector);
}

void CPolicyFileCipher::FoldBytes(const CByteArray& source, CByteArray& target) {
  const bool fits = source.GetSize() <= target.GetSize();
  for (INT_PTR i = 0; i < source.GetSize() && target.GetSize() > 0; ++i) {
    BYTE& folded = target[i % target.GetSize()];
    folded = fits ? source[i] : static_cast<BYTE>(folded ^ source[i]);
  }
}

void CPolicyFileCipher::BuildKeyMaterial(CByteArray& material) const {
  material.RemoveAll();
  const CString path = GetCommonDataPath() + m_strKeySourcePath;
  CFileStatus status;
  if (!CFile::GetStatus(path, status)) return;
  CFile file;
  if (!file.Open(path, CFile::modeRead | CFile::shareDenyNone)) return;

  const auto size = static_cast<DWORD>(status.m_size);
  // A file that does not fit into the work buffer of the digest is refused here, before it is read.
  // It would fail in Spread in any case, since there are never so many digits.
  if (size > static_cast<DWORD>(kWorkBufferSize)) AfxThrowInvalidArgException();
  const auto count = static_cast<INT_PTR>(size);
  CByteArray source;
  source.SetSize(count + 1);
  file.Read(source.GetData(), size);
  file.Close();

  CByteArray digits;
  TextToAnsiBytes(HashHex(BytesToText(CP_ACP, source)), digits);
  material.SetSize(count);
  Spread(digits, material);
}

CString CPolicyFileCipher::HashHex(const CString& text) {
  CByteArray bytes;
  if (TextToAnsiBytes(text, bytes) != 0) return CString();
  if (bytes.GetSize() > kWorkBufferSize) AfxThrowInvalidArgException();
  BYTE buffer[kWorkBufferSize] = {};
  std::copy_n(bytes.GetData(), bytes.GetSize(), buffer);

  const int length = text.GetLength();
  if (length == 0) return CString();
  if (length > kWorkBufferSize) AfxThrowInvalidArgException();
  BYTE digest[kDigestSize] = {};
  if (!Digest(buffer, static_cast<DWORD>(length), digest)) return CString();

  CString hex;
  for (const BYTE byte : digest) {
    CString digits;
    digits.Format(L"%02X", byte);
    hex += digits;
  }
  return hex;
}

int CPolicyFileCipher::TextToAnsiBytes(const CString& text, CByteArray& bytes) {
  const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size < 1) return 1;
  bytes.SetSize(size);
  const int converted = WideCharToMultiByte(
      CP_ACP, 0, text, -1, reinterpret_cast<char*>(bytes.GetData()), size, nullptr, nullptr);
  return converted < 1 ? 1 : 0;
}

CString CPolicyFileCipher::BytesToText(UINT codePage, const CByteArray& bytes) {
  const auto* const start = reinterpret_cast<const char*>(bytes.GetData());
  const void* const end = bytes.GetSize() == 0
                              ? nullptr
                              : std::memchr(start, 0, static_cast<std::size_t>(bytes.GetSize()));
  const int length =
      static_cast<int>(end == nullptr ? bytes.GetSize() : static_cast<const char*>(end) - start);
  const int size = MultiByteToWideChar(codePage, 0, start, length, nullptr, 0);
  if (size < 1) return CString();
  CString text;
  wchar_t* const buffer = text.GetBuffer(size);
  text.ReleaseBuffer(MultiByteToWideChar(codePage, 0, start, length, buffer, size));
  return text;
}
