#!/usr/bin/env bash
# toolreadback.sh DIR FFMPEG FFPROBE [SOX]: the files the wave file tests wrote are read back by
# a widely used audio tool, which must report the format they were written with and decode the
# samples they hold bit for bit; so must sox, where it is installed, for integer samples. Each line of DIR/*.manifest names one file:
#   file|raw samples|codec|rate|channels
# Exits 77 (skipped) when no test wrote anything, as when the tests of an architecture are skipped.
set -u
dir=$1 ffmpeg=$2 ffprobe=$3 sox=${4:-}
shopt -s nullglob
manifests=("$dir"/*.manifest)
if ((${#manifests[@]} == 0)); then
    echo "no files were written for the tool to read back"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0 checked=0
while IFS='|' read -r file raw codec rate channels; do
    [[ -z $file ]] && continue
    path=$dir/$file
    got=$("$ffprobe" -v error -select_streams a:0 -show_entries stream=codec_name,sample_rate,channels \
          -of csv=p=0 "$path" 2>&1)
    if [[ $got != "$codec,$rate,$channels" ]]; then
        echo "FAIL $file: the tool reports '$got', written as '$codec,$rate,$channels'"
        failed=$((failed + 1))
        continue
    fi
    if ! "$ffmpeg" -nostdin -v error -y -i "$path" -c:a "$codec" -f "${codec#pcm_}" "$work/out.raw" ||
       ! cmp -s "$work/out.raw" "$dir/$raw"; then
        echo "FAIL $file: the tool's samples differ from those written"
        failed=$((failed + 1))
        continue
    fi
    # sox carries samples as 32-bit integers inside, so floats come back from it rounded: they
    # are left to ffmpeg.
    if [[ -n $sox && $codec != pcm_f* ]]; then
        if ! "$sox" -V1 "$path" -t raw "$work/sox.raw" || ! cmp -s "$work/sox.raw" "$dir/$raw"; then
            echo "FAIL $file: sox's samples differ from those written"
            failed=$((failed + 1))
            continue
        fi
    fi
    echo "ok   $file ($codec, $rate Hz, $channels channels)"
    checked=$((checked + 1))
done < <(cat "${manifests[@]}")
echo "$checked files read back as written, $failed failed"
((failed == 0 && checked > 0))
