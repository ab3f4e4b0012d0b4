#!/bin/sh
# Records pondera-cli's answers for a fixed set of cases (every family, refusals,
# faults, both plot modes, PNGs), one file per case, so that a restructuring can
# be shown to change no byte: record before, record after, diff -r the two.
# Usage: scripts/cli-record.sh BUILD_DIR OUT_DIR
set -u
cli="$1/app/pondera-cli"
out="$2"
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export PONDERA_REGISTRY="$work/reg.sqlite3" PONDERA_ERROR_LOG="$work/errors.txt"
n=0
run() { # run NAME ARGS...: stdout, stderr and status of one call
    n=$((n + 1))
    name=$(printf '%03d-%s' "$n" "$1")
    shift
    "$cli" "$@" >"$out/$name.out" 2>"$out/$name.err" </dev/null
    echo "status $?" >>"$out/$name.out"
}
runin() { # runin NAME INPUT ARGS...: as run, with INPUT on standard input
    n=$((n + 1))
    name=$(printf '%03d-%s' "$n" "$1")
    input="$2"
    shift 2
    printf '%s' "$input" | "$cli" "$@" >"$out/$name.out" 2>"$out/$name.err"
    echo "status $?" >>"$out/$name.out"
}

# Every family: moments, density, PNC (each side, both, none, crossed), quantiles.
for case in "Normal 10 2 0 0" "LogNormal 1 0.5 0 0" "Exponential 2 0 0 0" \
    "Weibull 2 3 1 0" "Uniform 0 4 0 0" "Triangular 0 1 4 0" \
    "Johnson SB|1.2 0.4 5 -1" "Johnson SL|1.5 0.3 1 2" "Johnson SU|2 -0.5 1.5 3"; do
    dist=${case%%|*}
    if [ "$dist" = "$case" ]; then dist=${case%% *}; params=${case#* }; else params=${case#*|}; fi
    tag=$(echo "$dist" | tr -d ' ')
    # shellcheck disable=SC2086
    run "moments-$tag" moments "$dist" $params
    # shellcheck disable=SC2086
    run "pdf-$tag" pdf "$dist" $params --range -2 12 --points 15
    for lim in "--lsl 1" "--usl 5" "--lsl 1 --usl 5" "" "--lsl 5 --usl 1" "--lsl -1e300 --usl 1e300"; do
        # shellcheck disable=SC2086
        run "pnc-$tag" pnc "$dist" $params $lim
    done
    for q in "--lower 0.01" "--upper 1e-9" "--lower 0" "--upper 1"; do
        # shellcheck disable=SC2086
        run "quantile-$tag" quantile "$dist" $params $q
    done
done
# Refusals and faults of the parameters.
run pnc-bad-sd pnc Normal 0 -1 0 0 --lsl 1
run pnc-bad-weibull pnc Weibull 0 1 0 0 --usl 1
run pnc-bad-uniform pnc Uniform 4 0 0 0 --usl 1
run pnc-bad-triangular pnc Triangular 0 5 4 0 --usl 1
run pnc-bad-johnson pnc "Johnson SU" 1 0.5 0 1 --lsl -1
run pnc-bad-sb pnc "Johnson SB" -1 0 1 0 --lsl 0.5
run pnc-huge pnc Normal 1e300 1e299 0 0 --lsl 0 --usl 1e301
run pnc-tiny pnc Normal 0 1e-300 0 0 --lsl -1e-299 --usl 1e-299
run pnc-unknown pnc Foo 1 2 3 4
run moments-missing moments Normal
runin pnc-batch "Normal|0|1|||-1|1
Weibull|2|3|1||2|
Johnson SU|2|-0.5|1.5|3||4
Exponential|-1|||||
Johnson SB|1.2|0.4|5|-1|0|3
Uniform|0|1|||0.5|0.2
" pnc
# Johnson fits by moments: every region, the boundaries and the impossible.
for m in "0 1 0 3" "10 2 0.5 3.5" "10 2 1 4" "0 1 1.5 7" "0 1 -1 3" "0 1 0 2" \
    "0 1 0.3 2.5" "5 1 2 9" "0 1 0 1.5" "0 1 1 1.5" "0 1 0 100" "0 1 3 30" \
    "0 1 0.5 1.25" "1e300 1e299 0.5 4" "0 0 0 3"; do
    # shellcheck disable=SC2086
    run fit fit $m
done
runin fit-batch "0 1 0 3
0 1 0.8 3.4
0 1 0 1
1 2 3
" fit
# Samples: a skewed set, a normal set, bad lines, several columns.
skewed="2.1
2.5
2.2
3.9
2.8
2.4
5.6
2.3
3.1
2.6
4.4
2.2
2.9
3.3
2.7
"
normal="9.8
10.1
10.4
9.7
10.0
10.2
9.9
10.3
9.6
10.0
10.1
9.9
"
runin data-skewed "$skewed" data - --lsl 2 --usl 5
runin data-normal "$normal" data - --lsl 9.5 --usl 10.5 --target 10
runin data-nolimits "$normal" data -
runin data-crossed "$normal" data - --lsl 11 --usl 9
runin data-bad "1
2
x
" data -
runin data-columns "a,b
1,2
3,4
5,7
" data -
runin data-column-b "a,b
1,2
3,4
5,7
2,2
" data - --column b
runin identify-skewed "$skewed" identify - --replicates 30 --seed 3 --lsl 2 --usl 5
runin identify-normal "$normal" identify - --replicates 0
# The window's Plot, both modes, with PNGs.
plot() {
    tag="$1"
    shift
    run "plot-$tag" plot "$@" --png "$out/$(printf '%03d' $((n + 1)))-plot-$tag.png"
}
plot normal --lsl 7 --usl 13 --target 10
plot weibull --dist Weibull --param1 1.5 --param2 2 --param3 0 --usl 4
plot lognormal --dist LogNormal --lsl 0.5 --scale 2 --size 500x300
plot triangular --dist Triangular --range endpoints
plot uniform-bad --dist Uniform --param1 5 --param2 1
plot moments-sb --moments --mean 0 --stdev 1 --skewness 0.3 --kurtosis 2.5 --lsl -1 --usl 1
plot moments-su --moments --mean 10 --stdev 2 --skewness 1 --kurtosis 6 --usl 16
plot moments-impossible --moments --mean 0 --stdev 1 --skewness 1 --kurtosis 1.5
plot moments-blank --moments --mean 0 --stdev "" --skewness 0 --kurtosis 3
plot decimals --decimals 6 --display scientific --xticks 7 --yticks 3 --lsl 9 --usl 11
plot fixed --xmin 0 --xmax 20 --num-stdev 4
exit 0
