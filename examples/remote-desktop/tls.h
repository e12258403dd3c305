// TLS 1.3 with a certificate that is made for one run and known by its fingerprint alone.
#pragma once

#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>

#include <ctime>
#include <memory>
#include <optional>

#include "invitation.h"
#include "owner.h"
#include "protocol.h"

namespace remote {

struct TlsFailure : std::runtime_error {
  using runtime_error::runtime_error;
};

inline int check(int result) {
  if (result < 0) throw TlsFailure(gnutls_strerror(result));
  return result;
}

inline Fingerprint sha256(const gnutls_datum_t& data) {
  Fingerprint fingerprint;
  check(gnutls_hash_fast(GNUTLS_DIG_SHA256, data.data, data.size, fingerprint.data()));
  return fingerprint;
}

template <class Handle, auto init, auto end>
class Made {
 public:
  Made() { check(init(&handle_)); }
  ~Made() { end(handle_); }
  Made(const Made&) = delete;
  Made& operator=(const Made&) = delete;
  Handle get() const { return handle_; }

 private:
  Handle handle_{};
};
using PrivateKey =
    Made<gnutls_x509_privkey_t, gnutls_x509_privkey_init, gnutls_x509_privkey_deinit>;
using Certificate = Made<gnutls_x509_crt_t, gnutls_x509_crt_init, gnutls_x509_crt_deinit>;

// The sharing side's certificate with its key; the viewing side has none.
class Credentials {
 public:
  explicit Credentials(Side side) {
    if (side == Side::view) return;
    // No field of it is read: the fingerprint is all that counts.
    constexpr time_t kYear = 365 * 24 * 60 * 60;
    const PrivateKey key;
    const Certificate certificate;
    const auto made = certificate.get();
    const u8 serial = 1;
    check(gnutls_x509_privkey_generate(key.get(), GNUTLS_PK_ECDSA,
                                       GNUTLS_CURVE_TO_BITS(GNUTLS_ECC_CURVE_SECP256R1), 0));
    check(gnutls_x509_crt_set_version(made, 3));
    check(gnutls_x509_crt_set_serial(made, &serial, sizeof serial));
    check(gnutls_x509_crt_set_dn(made, "CN=remote-desktop", nullptr));
    check(gnutls_x509_crt_set_activation_time(made, std::time(nullptr) - kYear));
    check(gnutls_x509_crt_set_expiration_time(made, std::time(nullptr) + 10 * kYear));
    check(gnutls_x509_crt_set_key(made, key.get()));
    check(gnutls_x509_crt_sign2(made, made, key.get(), GNUTLS_DIG_SHA256, 0));
    auto chain = made;
    check(gnutls_certificate_set_x509_key(get(), &chain, 1, key.get()));
    gnutls_datum_t encoded{};
    check(gnutls_x509_crt_export2(made, GNUTLS_X509_FMT_DER, &encoded));
    fingerprint_ = sha256(encoded);
    gnutls_free(encoded.data);
  }

  gnutls_certificate_credentials_t get() const { return credentials_.get(); }
  const Fingerprint& fingerprint() const { return fingerprint_; }

 private:
  Made<gnutls_certificate_credentials_t, gnutls_certificate_allocate_credentials,
       gnutls_certificate_free_credentials>
      credentials_;
  Fingerprint fingerprint_{};
};

// One side of a connection on a non-blocking socket, which stays the caller's. Failures throw
// TlsFailure; an empty result means "not now".
class Tls {
 public:
  Tls(int socket, const Credentials& own, Side side) {
    gnutls_session_t made = nullptr;
    const unsigned role = side == Side::share ? GNUTLS_SERVER : GNUTLS_CLIENT;
    check(gnutls_init(&made, role | GNUTLS_NONBLOCK | GNUTLS_NO_SIGNAL | GNUTLS_NO_TICKETS));
    session_.reset(made);
    check(gnutls_priority_set_direct(made, "NORMAL:-VERS-ALL:+VERS-TLS1.3", nullptr));
    check(gnutls_credentials_set(made, GNUTLS_CRD_CERTIFICATE, own.get()));
    gnutls_transport_set_int(made, socket);
  }

  // True when both sides agree; the peer is then the one with the expected fingerprint, if any.
  bool shakeHands(const std::optional<Fingerprint>& expected) {
    if (!outcome(gnutls_handshake(session_.get()))) return false;
    unsigned count = 0;
    const auto* certificates = gnutls_certificate_get_peers(session_.get(), &count);
    if (expected && (count == 0 || sha256(certificates[0]) != *expected)) {
      throw TlsFailure("the host's fingerprint is not that of the invitation");
    }
    return true;
  }

  // How many of the bytes were taken. After an empty result the same bytes must come again.
  std::optional<std::size_t> send(ByteView bytes) {
    return outcome(gnutls_record_send(session_.get(), bytes.data(), bytes.size()));
  }

  // How many bytes came.
  std::optional<std::size_t> receive(std::span<u8> into) {
    const auto count = outcome(gnutls_record_recv(session_.get(), into.data(), into.size()));
    if (count == std::size_t{0}) throw TlsFailure("the other side has closed the connection");
    return count;
  }

 private:
  static std::optional<std::size_t> outcome(ssize_t result) {
    if (result == GNUTLS_E_AGAIN || result == GNUTLS_E_INTERRUPTED) return std::nullopt;
    return static_cast<std::size_t>(check(static_cast<int>(result)));
  }

  Owner<std::remove_pointer_t<gnutls_session_t>, gnutls_deinit> session_;
};

}  // namespace remote
