#pragma once

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/provider.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include "WebApps/webconfig/util/LateLibrary.h"

namespace webconfig::util {

/// What the system uses of libcrypto, which takes a seventh of the process' memory when it is loaded, and
/// most pages need nothing of it.
struct CryptoLibrary {
    LateLibrary library{"libcrypto.so.3"};

    WEBCONFIG_LATE_FUNCTION(ASN1_TIME_diff);
    WEBCONFIG_LATE_FUNCTION(ASN1_TIME_print);
    WEBCONFIG_LATE_FUNCTION(BIO_ctrl);
    WEBCONFIG_LATE_FUNCTION(BIO_free);
    WEBCONFIG_LATE_FUNCTION(BIO_new);
    WEBCONFIG_LATE_FUNCTION(BIO_new_file);
    WEBCONFIG_LATE_FUNCTION(BIO_new_mem_buf);
    WEBCONFIG_LATE_FUNCTION(BIO_s_mem);
    WEBCONFIG_LATE_FUNCTION(CRYPTO_free);
    WEBCONFIG_LATE_FUNCTION(ERR_clear_error);
    WEBCONFIG_LATE_FUNCTION(ERR_error_string_n);
    WEBCONFIG_LATE_FUNCTION(ERR_get_error);
    WEBCONFIG_LATE_FUNCTION(EVP_Digest);
    WEBCONFIG_LATE_FUNCTION(EVP_DigestFinal_ex);
    WEBCONFIG_LATE_FUNCTION(EVP_DigestInit_ex);
    WEBCONFIG_LATE_FUNCTION(EVP_DigestUpdate);
    WEBCONFIG_LATE_FUNCTION(EVP_DigestVerify);
    WEBCONFIG_LATE_FUNCTION(EVP_DigestVerifyInit);
    WEBCONFIG_LATE_FUNCTION(EVP_MD_CTX_free);
    WEBCONFIG_LATE_FUNCTION(EVP_MD_CTX_new);
    WEBCONFIG_LATE_FUNCTION(EVP_MD_fetch);
    WEBCONFIG_LATE_FUNCTION(EVP_MD_free);
    WEBCONFIG_LATE_FUNCTION(EVP_PKEY_free);
    WEBCONFIG_LATE_FUNCTION(EVP_PKEY_get_base_id);
    WEBCONFIG_LATE_FUNCTION(EVP_PKEY_get_security_bits);
    WEBCONFIG_LATE_FUNCTION(EVP_PKEY_is_a);
    WEBCONFIG_LATE_FUNCTION(EVP_md5);
    WEBCONFIG_LATE_FUNCTION(EVP_sha256);
    WEBCONFIG_LATE_FUNCTION(EVP_sha512);
    WEBCONFIG_LATE_FUNCTION(OSSL_LIB_CTX_free);
    WEBCONFIG_LATE_FUNCTION(OSSL_LIB_CTX_new);
    WEBCONFIG_LATE_FUNCTION(OSSL_PROVIDER_load);
    WEBCONFIG_LATE_FUNCTION(OSSL_PROVIDER_unload);
    WEBCONFIG_LATE_FUNCTION(PEM_read_bio_PUBKEY);
    WEBCONFIG_LATE_FUNCTION(PEM_read_bio_PrivateKey);
    WEBCONFIG_LATE_FUNCTION(PEM_read_bio_X509);
    WEBCONFIG_LATE_FUNCTION(PKCS5_PBKDF2_HMAC_SHA1);
    WEBCONFIG_LATE_FUNCTION(X509V3_EXT_print);
    WEBCONFIG_LATE_FUNCTION(X509_NAME_oneline);
    WEBCONFIG_LATE_FUNCTION(X509_check_issued);
    WEBCONFIG_LATE_FUNCTION(X509_check_private_key);
    WEBCONFIG_LATE_FUNCTION(X509_check_purpose);
    WEBCONFIG_LATE_FUNCTION(X509_cmp_current_time);
    WEBCONFIG_LATE_FUNCTION(X509_free);
    WEBCONFIG_LATE_FUNCTION(X509_get0_notAfter);
    WEBCONFIG_LATE_FUNCTION(X509_get0_notBefore);
    WEBCONFIG_LATE_FUNCTION(X509_get0_pubkey);
    WEBCONFIG_LATE_FUNCTION(X509_get_ext);
    WEBCONFIG_LATE_FUNCTION(X509_get_ext_by_NID);
    WEBCONFIG_LATE_FUNCTION(X509_get_issuer_name);
    WEBCONFIG_LATE_FUNCTION(X509_get_signature_info);
    WEBCONFIG_LATE_FUNCTION(X509_get_subject_name);
    WEBCONFIG_LATE_FUNCTION(i2d_PUBKEY);
};

/// The library, loaded when it is first asked for. Throws std::runtime_error, with the reason in the log,
/// where the device has none. Any thread may ask.
CryptoLibrary const &Crypto();

/// Frees an object of the library with the function that is made for it.
template <auto Free>
struct CryptoFree {
    template <typename Object>
    void operator()(Object *object) const {
        (Crypto().*Free)(object);
    }
};

/// The same for a text, or bytes, that it has made.
struct CryptoFreeMemory {
    void operator()(void *memory) const { Crypto().CRYPTO_free(memory, OPENSSL_FILE, OPENSSL_LINE); }
};

}  // namespace webconfig::util
