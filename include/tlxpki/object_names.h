/** @file
 * Names for the rows of the registry (tlxpki/objects.h) that programs need. Each is a row's index, and stands
 * wherever a function takes one:
 *
 *   add_X509_NAME_child_OID_index(name, TLX_OID_COMMON_NAME, TLX_TAG_UTF8_STRING, text, -1, -1);
 */
#ifndef TLXPKI_OBJECT_NAMES_H
#define TLXPKI_OBJECT_NAMES_H

enum {
    /* Digests and MACs. */
    TLX_OID_MD5 = 4,              /**< 1.2.840.113549.2.5 */
    TLX_OID_SHA1 = 64,            /**< 1.3.14.3.2.26 */
    TLX_OID_SHA224 = 675,         /**< 2.16.840.1.101.3.4.2.4 */
    TLX_OID_SHA256 = 672,         /**< 2.16.840.1.101.3.4.2.1 */
    TLX_OID_SHA384 = 673,         /**< 2.16.840.1.101.3.4.2.2 */
    TLX_OID_SHA512 = 674,         /**< 2.16.840.1.101.3.4.2.3 */
    TLX_OID_HAS160 = 781,         /**< 1.2.410.200004.1.2 */
    TLX_OID_HMAC_WITH_SHA1 = 163, /**< 1.2.840.113549.2.7 */

    /* Ciphers, and password-based encryption. */
    TLX_OID_DES_EDE3_CBC = 44,       /**< 1.2.840.113549.3.7 */
    TLX_OID_AES_128_CBC = 419,       /**< 2.16.840.1.101.3.4.1.2 */
    TLX_OID_AES_192_CBC = 423,       /**< 2.16.840.1.101.3.4.1.22 */
    TLX_OID_AES_256_CBC = 427,       /**< 2.16.840.1.101.3.4.1.42 */
    TLX_OID_SEED_CBC = 777,          /**< 1.2.410.200004.1.4 */
    TLX_OID_ARIA_CBC = 824,          /**< 1.2.410.100001.1.20 */
    TLX_OID_PBKDF2 = 69,             /**< 1.2.840.113549.1.5.12 */
    TLX_OID_PBES2 = 161,             /**< 1.2.840.113549.1.5.13 */
    TLX_OID_PBE_SHA1_SEED_CBC = 780, /**< 1.2.410.200004.1.15 */
    TLX_OID_PBE_SHA1_ARIA_CBC = 828, /**< 1.2.410.100001.1.24 */

    /* Keys and curves. */
    TLX_OID_RSA_ENCRYPTION = 6,  /**< 1.2.840.113549.1.1.1 */
    TLX_OID_DSA = 116,           /**< 1.2.840.10040.4.1 */
    TLX_OID_KCDSA1 = 782,        /**< 1.2.410.200004.1.21 */
    TLX_OID_EC_PUBLIC_KEY = 408, /**< 1.2.840.10045.2.1 */
    TLX_OID_PRIME256V1 = 415,    /**< 1.2.840.10045.3.1.7 */
    TLX_OID_SECP384R1 = 715,     /**< 1.3.132.0.34 */
    TLX_OID_SECP521R1 = 716,     /**< 1.3.132.0.35 */

    /* Signatures, and what RSA takes as parameters. */
    TLX_OID_MD5_WITH_RSA = 8,         /**< 1.2.840.113549.1.1.4 */
    TLX_OID_SHA1_WITH_RSA = 65,       /**< 1.2.840.113549.1.1.5 */
    TLX_OID_SHA224_WITH_RSA = 671,    /**< 1.2.840.113549.1.1.14 */
    TLX_OID_SHA256_WITH_RSA = 668,    /**< 1.2.840.113549.1.1.11 */
    TLX_OID_SHA384_WITH_RSA = 669,    /**< 1.2.840.113549.1.1.12 */
    TLX_OID_SHA512_WITH_RSA = 670,    /**< 1.2.840.113549.1.1.13 */
    TLX_OID_RSASSA_PSS = 835,         /**< 1.2.840.113549.1.1.10 */
    TLX_OID_RSAES_OAEP = 832,         /**< 1.2.840.113549.1.1.7 */
    TLX_OID_MGF1 = 833,               /**< 1.2.840.113549.1.1.8 */
    TLX_OID_P_SPECIFIED = 834,        /**< 1.2.840.113549.1.1.9 */
    TLX_OID_HAS160_WITH_KCDSA1 = 783, /**< 1.2.410.200004.1.22 */
    TLX_OID_KCDSA1_WITH_SHA1 = 784,   /**< 1.2.410.200004.1.23 */
    TLX_OID_KCDSA_WITH_HAS160 = 801,  /**< 1.2.410.200004.1.8 */
    TLX_OID_KCDSA_WITH_SHA1 = 802,    /**< 1.2.410.200004.1.9 */
    TLX_OID_ECDSA_WITH_SHA1 = 416,    /**< 1.2.840.10045.4.1 */
    TLX_OID_ECDSA_WITH_SHA256 = 840,  /**< 1.2.840.10045.4.3.2 */

    /* Types in names. */
    TLX_OID_COMMON_NAME = 13,              /**< 2.5.4.3 */
    TLX_OID_SURNAME = 100,                 /**< 2.5.4.4 */
    TLX_OID_SERIAL_NUMBER = 105,           /**< 2.5.4.5 */
    TLX_OID_COUNTRY_NAME = 14,             /**< 2.5.4.6 */
    TLX_OID_LOCALITY_NAME = 15,            /**< 2.5.4.7 */
    TLX_OID_STATE_OR_PROVINCE_NAME = 16,   /**< 2.5.4.8 */
    TLX_OID_STREET_ADDRESS = 660,          /**< 2.5.4.9 */
    TLX_OID_ORGANIZATION_NAME = 17,        /**< 2.5.4.10 */
    TLX_OID_ORGANIZATIONAL_UNIT_NAME = 18, /**< 2.5.4.11 */
    TLX_OID_TITLE = 106,                   /**< 2.5.4.12 */
    TLX_OID_DESCRIPTION = 107,             /**< 2.5.4.13 */
    TLX_OID_POSTAL_CODE = 661,             /**< 2.5.4.17 */
    TLX_OID_GIVEN_NAME = 99,               /**< 2.5.4.42 */
    TLX_OID_INITIALS = 101,                /**< 2.5.4.43 */
    TLX_OID_DN_QUALIFIER = 174,            /**< 2.5.4.46 */
    TLX_OID_USER_ID = 458,                 /**< 0.9.2342.19200300.100.1.1 */
    TLX_OID_DOMAIN_COMPONENT = 391,        /**< 0.9.2342.19200300.100.1.25 */
    TLX_OID_EMAIL_ADDRESS = 48,            /**< 1.2.840.113549.1.9.1 */
    TLX_OID_UNSTRUCTURED_NAME = 49,        /**< 1.2.840.113549.1.9.2 */

    /* Attributes. */
    TLX_OID_CONTENT_TYPE = 50,       /**< 1.2.840.113549.1.9.3 */
    TLX_OID_MESSAGE_DIGEST = 51,     /**< 1.2.840.113549.1.9.4 */
    TLX_OID_SIGNING_TIME = 52,       /**< 1.2.840.113549.1.9.5 */
    TLX_OID_COUNTERSIGNATURE = 53,   /**< 1.2.840.113549.1.9.6 */
    TLX_OID_CHALLENGE_PASSWORD = 54, /**< 1.2.840.113549.1.9.7 */
    TLX_OID_EXTENSION_REQUEST = 172, /**< 1.2.840.113549.1.9.14 */
    TLX_OID_FRIENDLY_NAME = 156,     /**< 1.2.840.113549.1.9.20 */
    TLX_OID_LOCAL_KEY_ID = 157,      /**< 1.2.840.113549.1.9.21 */

    /* Content types. */
    TLX_OID_PKCS7_DATA = 21,                      /**< 1.2.840.113549.1.7.1 */
    TLX_OID_PKCS7_SIGNED_DATA = 22,               /**< 1.2.840.113549.1.7.2 */
    TLX_OID_PKCS7_ENVELOPED_DATA = 23,            /**< 1.2.840.113549.1.7.3 */
    TLX_OID_PKCS7_SIGNED_AND_ENVELOPED_DATA = 24, /**< 1.2.840.113549.1.7.4 */
    TLX_OID_PKCS7_DIGESTED_DATA = 25,             /**< 1.2.840.113549.1.7.5 */
    TLX_OID_PKCS7_ENCRYPTED_DATA = 26,            /**< 1.2.840.113549.1.7.6 */
    TLX_OID_KISA_CTL = 837,                       /**< 1.3.6.1.4.1.311.10.1 */

    /* Extensions. */
    TLX_OID_SUBJECT_KEY_IDENTIFIER = 82,   /**< 2.5.29.14 */
    TLX_OID_KEY_USAGE = 83,                /**< 2.5.29.15 */
    TLX_OID_PRIVATE_KEY_USAGE_PERIOD = 84, /**< 2.5.29.16 */
    TLX_OID_SUBJECT_ALT_NAME = 85,         /**< 2.5.29.17 */
    TLX_OID_ISSUER_ALT_NAME = 86,          /**< 2.5.29.18 */
    TLX_OID_BASIC_CONSTRAINTS = 87,        /**< 2.5.29.19 */
    TLX_OID_CRL_NUMBER = 88,               /**< 2.5.29.20 */
    TLX_OID_CRL_REASON = 141,              /**< 2.5.29.21 */
    TLX_OID_NAME_CONSTRAINTS = 666,        /**< 2.5.29.30 */
    TLX_OID_CRL_DISTRIBUTION_POINTS = 103, /**< 2.5.29.31 */
    TLX_OID_CERTIFICATE_POLICIES = 89,     /**< 2.5.29.32 */
    TLX_OID_POLICY_MAPPINGS = 747,         /**< 2.5.29.33 */
    TLX_OID_AUTHORITY_KEY_IDENTIFIER = 90, /**< 2.5.29.35 */
    TLX_OID_POLICY_CONSTRAINTS = 401,      /**< 2.5.29.36 */
    TLX_OID_EXTENDED_KEY_USAGE = 126,      /**< 2.5.29.37 */
    TLX_OID_INHIBIT_ANY_POLICY = 748,      /**< 2.5.29.54 */
    TLX_OID_AUTHORITY_INFO_ACCESS = 177,   /**< 1.3.6.1.5.5.7.1.1 */
    TLX_OID_SUBJECT_INFO_ACCESS = 398,     /**< 1.3.6.1.5.5.7.1.11 */
    TLX_OID_OCSP_NO_CHECK = 369,           /**< 1.3.6.1.5.5.7.48.1.5 */

    /* Extensions of revocation lists and of their entries; also TLX_OID_CRL_NUMBER and TLX_OID_CRL_REASON. */
    TLX_OID_INVALIDITY_DATE = 142,            /**< 2.5.29.24 */
    TLX_OID_DELTA_CRL_INDICATOR = 140,        /**< 2.5.29.27 */
    TLX_OID_ISSUING_DISTRIBUTION_POINT = 770, /**< 2.5.29.28 */
    TLX_OID_CERTIFICATE_ISSUER = 771,         /**< 2.5.29.29 */

    /* What stands in extensions: a policy, its qualifiers, access methods and key purposes. */
    TLX_OID_ANY_POLICY = 746,            /**< 2.5.29.32.0 */
    TLX_OID_QUALIFIER_CPS = 164,         /**< 1.3.6.1.5.5.7.2.1 */
    TLX_OID_QUALIFIER_USER_NOTICE = 165, /**< 1.3.6.1.5.5.7.2.2 */
    TLX_OID_AD_OCSP = 178,               /**< 1.3.6.1.5.5.7.48.1 */
    TLX_OID_AD_CA_ISSUERS = 179,         /**< 1.3.6.1.5.5.7.48.2 */
    TLX_OID_KP_SERVER_AUTH = 129,        /**< 1.3.6.1.5.5.7.3.1 */
    TLX_OID_KP_CLIENT_AUTH = 130,        /**< 1.3.6.1.5.5.7.3.2 */
    TLX_OID_KP_CODE_SIGNING = 131,       /**< 1.3.6.1.5.5.7.3.3 */
    TLX_OID_KP_EMAIL_PROTECTION = 132,   /**< 1.3.6.1.5.5.7.3.4 */
    TLX_OID_KP_TIME_STAMPING = 133,      /**< 1.3.6.1.5.5.7.3.8 */
    TLX_OID_KP_OCSP_SIGNING = 180,       /**< 1.3.6.1.5.5.7.3.9 */

    /* The KISA profile. */
    TLX_OID_KISA_IDENTIFY_DATA = 786,        /**< 1.2.410.200004.10.1.1 */
    TLX_OID_KISA_IDENTIFY_DATA_FORMER = 785, /**< 1.2.410.200004.6.1 */
    TLX_OID_KISA_VID = 787,                  /**< 1.2.410.200004.10.1.1.1 */
    TLX_OID_KISA_ENCRYPTED_VID = 788,        /**< 1.2.410.200004.10.1.1.2 */
    TLX_OID_KISA_RANDOM_NUM = 789,           /**< 1.2.410.200004.10.1.1.3 */
    TLX_OID_KISA_HSM = 795                   /**< 1.2.410.200004.10.1.2 */
};

#endif
