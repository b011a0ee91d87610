#!/usr/bin/env bash
# usage: other_processor.sh GOLDEN_TESTS SINES
# Fails unless the golden numbers stay what they are where the C library takes its variants for processors without fused
# multiply-add, as it does where sines change.
set -euo pipefail
golden=$1 sines=$2
setting=glibc.cpu.hwcaps=-FMA,-AVX2,-AVX2_Usable,-FMA_Usable,-FMA4

if [[ $("$sines") == "$(GLIBC_TUNABLES=$setting "$sines")" ]]; then
    if grep -qw fma /proc/cpuinfo; then
        echo "the setting does not reach the C library, so this test would prove nothing"
        exit 1
    fi
    echo "this processor has no fused multiply-add: the golden numbers hold without it anyway"
fi
GLIBC_TUNABLES=$setting "$golden" --gtest_brief=1
