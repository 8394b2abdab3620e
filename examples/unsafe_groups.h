#ifndef EXAMPLES_UNSAFE_GROUPS_H
#define EXAMPLES_UNSAFE_GROUPS_H

/// Files of groups that nobody should agree in, though OpenSSL's EVP_PKEY_param_check() finds no fault with
/// the first block of each.
namespace example {

/// p = 2 * 65537 * k + 1 for a random k, and g = 2^((p - 1) / 65537): there are 65537 secrets to guess from.
/// The subgroup's order stands in the block.
inline constexpr char SMALL_SUBGROUP[] = R"(-----BEGIN X9.42 DH PARAMETERS-----
MIIBDAKBgQCAACBnb/dYP5rovLDLthVmgVxCFi5mb0x6BZKJWVdKy+2aPeTQ4AGT
yD5kXoyx5YtUZa+zw7TafRwvmUugJQpuTcXEecdwNyPSSKqduGKRnM/jAJTsOS6U
IO6t8F1492QLS2g9xdjlculKYUduyOlXsUbRUZQKTecYKVZer3InGQKBgHyEVqNR
mpsaITZoKWlgzf1nsLgG58m4IF0kCdi2rpm/biarKaXGp/lRkwv50dWfXpVipWvJ
7qxFoqmdLkx/8E7X/7SPhEo+GhJFy1TW3nwM5fzCTInH4dEagLokVoQbLy4/PbDq
0Q7Z8WIhwCSqjnRUjP4lKs3asBqYfBwxjechAgMBAAE=
-----END X9.42 DH PARAMETERS-----
)";

/// The same p and g without the order, behind a good block of another algorithm, which is not what is loaded.
/// That one is of "openssl genpkey -genparam -algorithm DSA -pkeyopt dsa_paramgen_bits:1024".
inline constexpr char BEHIND_ANOTHER_BLOCK[] = R"(-----BEGIN DSA PARAMETERS-----
MIIBHwKBgQC6g+aBRHM+47wjZ/7rkGwFV95aWkggcWp+qqwp3sEnZTAoES1Dienf
TJNTiyXBoH/GgN4zVwxBgobxDeft0UAidwsg80QzkrEztChVQFMZLDI7Y8wtXXAB
3M9I2tRK5mAVr9O52Yq9sFQ3Jtl4PUdztw2Z5yQ9bs9qETB9LRyzdQIVAO6JTTZT
FDtImVtQcCkgm1q4d+NNAoGBAKe7wjNOTCFrgrc0yujjFx6ZHfeX+bL2c3xcWI7x
FOngPakURctSSQcRKXpU89s3aK3J+RMOLYByJchVv2us8pRjWyNh2zSOU9qDnQo2
baywtKQWX7S5nOunqd7ls3yMzK9ufXocY+ciquAviaISVg+xFwJ2caN9AVGTjN7O
fd8d
-----END DSA PARAMETERS-----
-----BEGIN DH PARAMETERS-----
MIIBBwKBgQCAACBnb/dYP5rovLDLthVmgVxCFi5mb0x6BZKJWVdKy+2aPeTQ4AGT
yD5kXoyx5YtUZa+zw7TafRwvmUugJQpuTcXEecdwNyPSSKqduGKRnM/jAJTsOS6U
IO6t8F1492QLS2g9xdjlculKYUduyOlXsUbRUZQKTecYKVZer3InGQKBgHyEVqNR
mpsaITZoKWlgzf1nsLgG58m4IF0kCdi2rpm/biarKaXGp/lRkwv50dWfXpVipWvJ
7qxFoqmdLkx/8E7X/7SPhEo+GhJFy1TW3nwM5fzCTInH4dEagLokVoQbLy4/PbDq
0Q7Z8WIhwCSqjnRUjP4lKs3asBqYfBwxjech
-----END DH PARAMETERS-----
)";

/// RFC 5114, section 2.1: OpenSSL knows it by name. Its p is no safe prime: the subgroup has 160 bits.
inline constexpr char KNOWN_BY_NAME[] = R"(-----BEGIN DH PARAMETERS-----
MIIBCAKBgQCxC4+WoIDgHd6S3l6uXVTsUsmfvPsGo8aaap3KUtI7YWBz4oZ1oj0Y
mDjvHi7mUsAT7LSuqQYRIySXXDzUm4O/rMvdfZDEvXCYSI6cIZpzck7/1vrlZEc4
+qMaT/VbzMChUa9fDci0vUW/N982XBpl5oz9p21NpwjfH7K8LkpDcQKBgQCk0cvV
w/00EmdlpELvuZkF+BBN0lisUH/WQGz/FCZtMSZv6h5cQVZLd35pD1UE8hMWAhe0
sBuIal6RVH+eJ0n01/vX07mpLuGQnQ0iY/gKdqaiTAh6CR9THb8KAWm2oorWYqTR
jnOvoy13nVkY0IvIhY9Nzvl8KiSFXm7rIrOy5Q==
-----END DH PARAMETERS-----
)";

}  // namespace example

#endif
