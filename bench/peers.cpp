// The peers read the halves of a block as big-endian numbers, so their results differ from the
// library's. The work is the same.

#include "peers.h"

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/blowfish.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#if defined(HAVE_NETTLE)
#include <nettle/blowfish.h>
#endif
#if defined(HAVE_LIBGCRYPT)
#include <gcrypt.h>
#endif
#if defined(HAVE_BOTAN)
#include <botan/block_cipher.h>
#endif
#if defined(HAVE_CRYPTOPP)
#include <cryptopp/blowfish.h>
#include <cryptopp/modes.h>
#endif

namespace launcher::bench {
namespace {

// Enciphers by EVP, the interface for regions, always with one key. SetKey calls BF_set_key, to
// time the key set-up without the cost of EVP.
class OpenSsl : public Cipher {
 public:
  OpenSsl() {
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "BF-ECB", nullptr);
    const std::uint8_t key[16] = {};
    EVP_EncryptInit_ex2(encryption_.get(), cipher, key, nullptr, nullptr);
    EVP_DecryptInit_ex2(decryption_.get(), cipher, key, nullptr, nullptr);
    EVP_CIPHER_CTX_set_padding(encryption_.get(), 0);
    EVP_CIPHER_CTX_set_padding(decryption_.get(), 0);
    EVP_CIPHER_free(cipher);
  }

  void SetKey(const std::uint8_t* key, std::size_t size) override {
    BF_set_key(&key_, static_cast<int>(size), key);
  }
  void Encipher(std::uint8_t* region, std::size_t size) override {
    int written = 0;
    EVP_EncryptUpdate(encryption_.get(), region, &written, region, static_cast<int>(size));
  }
  void Decipher(std::uint8_t* region, std::size_t size) override {
    int written = 0;
    EVP_DecryptUpdate(decryption_.get(), region, &written, region, static_cast<int>(size));
  }

 protected:
  BF_KEY key_ = {};

 private:
  struct Freer {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
  };
  std::unique_ptr<EVP_CIPHER_CTX, Freer> encryption_{EVP_CIPHER_CTX_new()};
  std::unique_ptr<EVP_CIPHER_CTX, Freer> decryption_{EVP_CIPHER_CTX_new()};
};

// Enciphers by OpenSSL's function for one block, which does not change the order of a block's
// bytes. This is faster.
class OpenSslBlocks final : public OpenSsl {
 public:
  void Encipher(std::uint8_t* region, std::size_t size) override {
    for (std::size_t i = 0; i < size; i += 8) {
      BF_encrypt(reinterpret_cast<BF_LONG*>(region + i), &key_);
    }
  }
  void Decipher(std::uint8_t* region, std::size_t size) override {
    for (std::size_t i = 0; i < size; i += 8) {
      BF_decrypt(reinterpret_cast<BF_LONG*>(region + i), &key_);
    }
  }
};

#if defined(HAVE_NETTLE)
class Nettle final : public Cipher {
 public:
  void SetKey(const std::uint8_t* key, std::size_t size) override {
    blowfish_set_key(&context_, size, key);
  }
  void Encipher(std::uint8_t* region, std::size_t size) override {
    blowfish_encrypt(&context_, size, region, region);
  }
  void Decipher(std::uint8_t* region, std::size_t size) override {
    blowfish_decrypt(&context_, size, region, region);
  }

 private:
  blowfish_ctx context_;
};
#endif

#if defined(HAVE_LIBGCRYPT)
class Libgcrypt final : public Cipher {
 public:
  Libgcrypt() {
    gcry_check_version(nullptr);
    gcry_cipher_open(&handle_, GCRY_CIPHER_BLOWFISH, GCRY_CIPHER_MODE_ECB, 0);
  }
  ~Libgcrypt() override { gcry_cipher_close(handle_); }

  void SetKey(const std::uint8_t* key, std::size_t size) override {
    gcry_cipher_setkey(handle_, key, size);
  }
  void Encipher(std::uint8_t* region, std::size_t size) override {
    gcry_cipher_encrypt(handle_, region, size, nullptr, 0);
  }
  void Decipher(std::uint8_t* region, std::size_t size) override {
    gcry_cipher_decrypt(handle_, region, size, nullptr, 0);
  }

 private:
  gcry_cipher_hd_t handle_ = nullptr;
};
#endif

#if defined(HAVE_BOTAN)
class BotanCipher final : public Cipher {
 public:
  void SetKey(const std::uint8_t* key, std::size_t size) override { cipher_->set_key(key, size); }
  void Encipher(std::uint8_t* region, std::size_t size) override {
    cipher_->encrypt_n(region, region, size / 8);
  }
  void Decipher(std::uint8_t* region, std::size_t size) override {
    cipher_->decrypt_n(region, region, size / 8);
  }

 private:
  std::unique_ptr<Botan::BlockCipher> cipher_ = Botan::BlockCipher::create_or_throw("Blowfish");
};
#endif

#if defined(HAVE_CRYPTOPP)
class CryptoPp final : public Cipher {
 public:
  void SetKey(const std::uint8_t* key, std::size_t size) override {
    encryption_.SetKey(key, size);
    decryption_.SetKey(key, size);
  }
  void Encipher(std::uint8_t* region, std::size_t size) override {
    encryption_.ProcessData(region, region, size);
  }
  void Decipher(std::uint8_t* region, std::size_t size) override {
    decryption_.ProcessData(region, region, size);
  }

 private:
  CryptoPP::ECB_Mode<CryptoPP::Blowfish>::Encryption encryption_;
  CryptoPP::ECB_Mode<CryptoPP::Blowfish>::Decryption decryption_;
};
#endif

template <class T>
std::unique_ptr<Cipher> Make() {
  return std::make_unique<T>();
}

}  // namespace

const std::vector<Peer>& Peers() {
  static const std::vector<Peer> peers = {
    {"OpenSSL", Make<OpenSsl>},
    {"OpenSSL, by blocks", Make<OpenSslBlocks>},
#if defined(HAVE_NETTLE)
    {"nettle", Make<Nettle>},
#endif
#if defined(HAVE_LIBGCRYPT)
    {"libgcrypt", Make<Libgcrypt>},
#endif
#if defined(HAVE_BOTAN)
    {"Botan", Make<BotanCipher>},
#endif
#if defined(HAVE_CRYPTOPP)
    {"Crypto++", Make<CryptoPp>},
#endif
  };
  return peers;
}

const std::vector<std::string>& AbsentPeers() {
  static const std::vector<std::string> absent = {
#if !defined(HAVE_NETTLE)
    "nettle",
#endif
#if !defined(HAVE_LIBGCRYPT)
    "libgcrypt",
#endif
#if !defined(HAVE_BOTAN)
    "Botan",
#endif
#if !defined(HAVE_CRYPTOPP)
    "Crypto++",
#endif
  };
  return absent;
}

}  // namespace launcher::bench
