#pragma once

namespace zeb::test {

// An RSA key of 1024 bits and what OpenSSL's command line tool made of it, as base64.

inline constexpr char sampleMessage[] = "approve login 42";
/// PKCS #1.
inline constexpr char samplePrivateKey[] =
    "MIICXAIBAAKBgQCkzUuSkupcVZpLfdU+91ywX+yFXhJ6TcEfLrPF3OdxqX8FQSnCuPokMapZ3uXRJe9XjwHwLsga8ZqQ"
    "24QDA57oHLIJv5x8Z82HD3rgje6YRHrvUeJF6MsA0J4UN8wcwurJ2kcIrgsZAO0ZaLufzgGzBMEeWxFRsKMDOpXOWcQE"
    "oQIDAQABAoGBAJFEqa4NNOqpRnXu+I8lap3KIGo7Txxh967t8ueh3p3RY7cVBqOvfEd1RA0uLvRadQyAcZvvENK3T6EK"
    "7uXdRi83uOxiwsp1jwEjF61FAF1vjZCStLszFWN1N0VBRFjdzVgywaWZDTdKg/VfAkrsVNgdWmQTquQ4AOnV5b8MFggB"
    "AkEA16aAFL6n79os2bmTaKmac9WdmPp43mS1rMkIgn6BEMVWJx4Fgkxf+49dQSK0cBvHa2I519rOy2kWiDSNcPVXwQJB"
    "AMOjMKryDLX7+1Pzplj2wcBp1Lt05gM7ONAy5IpuQ00eCcQJK8A9MdB9NAHzBRD+85jT6o+re/KHZC/idz565OECQCVL"
    "cD8mMdjzPGpzA6FII6QAv36jYp/jft/g7I3U3vFNj3a4ZG+CUd8pjhEjtVzmEPjrReGkv7rB89mebQ+p/oECQEyA2FtA"
    "5C+WJiYiNX68n++6cvILOJcy5XilLjHkBHV3taHvZCh8xaoeC+RnQCfxSxkMZcFg8ctZnpgLG05XiIECQAFcJCGOs1lW"
    "ZmRDkeyJMmYrgk8MPAJoPjYZ4vHD7c9NSobcleyIGbP988Wi/ric/nRbbmRxu2maqj2Q1RfFkJU=";
/// PKCS #1.
inline constexpr char samplePublicKey[] =
    "MIGJAoGBAKTNS5KS6lxVmkt91T73XLBf7IVeEnpNwR8us8Xc53GpfwVBKcK4+iQxqlne5dEl71ePAfAuyBrxmpDbhAMD"
    "nugcsgm/nHxnzYcPeuCN7phEeu9R4kXoywDQnhQ3zBzC6snaRwiuCxkA7Rlou5/OAbMEwR5bEVGwowM6lc5ZxAShAgMB"
    "AAE=";
/// SubjectPublicKeyInfo.
inline constexpr char samplePublicKeyInfo[] =
    "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQCkzUuSkupcVZpLfdU+91ywX+yFXhJ6TcEfLrPF3OdxqX8FQSnCuPok"
    "MapZ3uXRJe9XjwHwLsga8ZqQ24QDA57oHLIJv5x8Z82HD3rgje6YRHrvUeJF6MsA0J4UN8wcwurJ2kcIrgsZAO0ZaLuf"
    "zgGzBMEeWxFRsKMDOpXOWcQEoQIDAQAB";
/// Of the message: PKCS #1 version 1.5 with SHA-1.
inline constexpr char sampleSignature[] =
    "J1Jax+N+lvKDf+gxPEqa+F0PU7mjcgr3AQMhNHbp8FAEWBjOYeLY5WrUXfJV2CFB8jDE8Xx4enge3Xlm1B5IHN/V9Wct"
    "6f7tyvihVSYlAz5/PY4+wO9jcZD7RgJ2iH7kvGN0jev/Qcv9leObXUC3YY82JoVXTuOX7pfAHvUDAlY=";
/// The message's bytes themselves in the same padding, without the name of a digest.
inline constexpr char samplePaddedMessage[] =
    "f0XvJEBqqjvpGapH2TvYdbWGaXxISFDAjY1dTfHkWtObH729QbLeZ8SfVYBK43YqCay7zfQIW2Qp73ZBCygILbSK6wNn"
    "fbHCGTPkfD02t4MtljNCrFgUU2CWil+u/zAAru0mSRSLmqq84A9mv47YrdZRu0SlDxgWu7rwYRGPbNo=";

}  // namespace zeb::test
