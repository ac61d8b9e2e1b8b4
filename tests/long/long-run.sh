# shellcheck shell=bash
# Sourced by the scripts beside it. They take --count NUMBER and --seed NUMBER.
cd "$(dirname "$0")/../.."
. packaging/setup.sh

# long_run_options COUNT "$@": sets count and seed; COUNT is how far to go unless told otherwise.
long_run_options() {
  count=$1
  seed=1
  shift
  while [ $# -gt 0 ]; do
    case $1 in
      --count) count=${2:?} ;;
      --seed) seed=${2:?} ;;
      *)
        echo "usage: $0 [--count NUMBER] [--seed NUMBER]" >&2
        exit 2
        ;;
    esac
    shift 2
  done
}

# long_run PRESET PROGRAM COUNT [FILTER]: runs the tests of a built program that match the filter.
# What a screen that is none cannot do is no finding; what takes a day hangs.
long_run() {
  say "$2, count $3, seed $seed"
  ORVANE_LONG_COUNT=$3 ORVANE_LONG_SEED=$seed timeout --foreground --kill-after 60 24h \
    nice "build/$1/tests/$2" --gtest_filter="${4:-*}" \
    2> >(grep -v '^This plugin does not support' >&2)
}
