#!/bin/bash
# Runs the unit tests of the debug build under Valgrind, and the tool on every sample: finds reads of memory that
# was never written (the sanitizers of gcc do not), and leaks.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Sweeps of many thousand cases. Each takes half a minute or more here, and other tests run the same code.
too_long=(
  Encapsulation.AllShortSequences
  FormatTimeCodeSei.TheFirstFrameBehindDroppedCountsIsMarked
  FormatTimeCodeSei.TimesComeBackOverAGrid
  GolombRead.SignedValues
  HrdParameters.ThirtyTwoCpbsFillTheArrays
  HrdWriting.WritesWhatWasParsed
  Pps.ExplicitScalingListsRunModulo256
  ScalingList.ReadsCodedListsAndReportsEveryCut
  SeiReader.SumsAroundTheLargestNumber
  ShortTermRefPicSet.RandomChainsAgreeWithAModel
  SpsIdentity.EverySampleComesBack
  SpsIdentity.GeneratedOnesComeBack
  SubLayerHrdParameters.HasAnEntryForEachCpb
  Vps.ReadsAsManyLayerSetsAndHrdsAsThereCanBe
)

build=build/debug
scripts/build.sh debug unit_tests entry_point_tests h265tool

memcheck=(scripts/quietly.sh valgrind -q --error-exitcode=1 --leak-check=full)

# run_share NUMBER: one share of the tests of both programs
run_share() {
  local tests
  for tests in unit_tests entry_point_tests; do
    GTEST_TOTAL_SHARDS=$shares GTEST_SHARD_INDEX=$1 "${memcheck[@]}" "$build/tests/$tests" --gtest_brief=1 \
      --gtest_filter="-$(IFS=: && echo "${too_long[*]}")" || return 1
  done
}

# one share a processor
shares=$(nproc)
running=()
for ((share = 0; share < shares; share++)); do
  run_share "$share" &
  running+=($!)
done
failed=0
for share in "${running[@]}"; do
  wait "$share" || failed=1
done

for sample in tests/samples/*.hevc tests/samples/units/*.nal; do
  "${memcheck[@]}" "$build/tools/h265tool/h265tool" inspect --json "$sample" || failed=1
done
exit $failed
