#!/usr/bin/env bash
# compile.sh BUILD WORK [RUNS]: measures the making of movies beside the ffmpeg command line. BUILD
# has the programs `vistrane` and `bench/camera_frames`, WORK is a folder for some gigabytes of
# frames, which are made once and kept.
#
# Ours and the peer run in turn; what is printed are medians of RUNS (5 unless given), one line for
# each pair, with tabs between:
#   name  kind  size  ours  peer  ours/peer  spread
# Times are in milliseconds; spread is how far apart the ratios of single runs were. Rows whose name
# ends in -cpu are the processor time of all cores, which other work on the machine disturbs less;
# those ending in -memory are the peak in kilobytes, -bytes the movie's size, -ssim its likeness to
# what was encoded. Before anything is measured the movies of both are compared: same number of
# frames, and PSNR of luma within 0.05 dB (chroma lies elsewhere: ours is where its tag says).
set -eu
export LC_ALL=C
build=$(readlink -f "$1")
mkdir -p "$2"
work=$(readlink -f "$2")
runs=${3:-5}
vistrane=$build/vistrane
lossless=(-preset ultrafast -qp 0)
# The colours of our movies, so that both encode the same pictures.
toBt709='scale=out_color_matrix=bt709:out_range=tv:flags=bicubic,format=yuv420p'

frames() { # FOLDER COUNT WIDTH HEIGHT
    if [ ! -e "$work/$1/made" ]; then
        mkdir -p "$work/$1"
        "$build/bench/camera_frames" "$work/$1" "$2" "$3" "$4"
        : >"$work/$1/made"
    fi
}

ours() { # FOLDER [OPTION...]: leaves the movie as WORK/ours.mov
    local folder=$work/$1
    shift
    rm -f "$folder"/*.mov
    "$vistrane" compile "$folder" --fps 30 "$@" >/dev/null 2>&1
    mv "$folder"/*.mov "$work/ours.mov"
}

ffmpegOf() { # FOLDER [OPTION...]: leaves the movie as WORK/peer.mov
    local folder=$work/$1
    shift
    ffmpeg -v error -nostdin -y -framerate 30 -i "$folder/%06d.png" -c:v libx264 "$@" "$work/peer.mov"
}

rawOf() { # FOLDER SIZE [OPTION...]: encodes only
    local raw=$work/$1.yuv size=$2
    shift 2
    ffmpeg -v error -nostdin -y -f rawvideo -pix_fmt yuv420p -s "$size" -r 30 -i "$raw" \
        -c:v libx264 "$@" "$work/peer.mov"
}

# Wall milliseconds, processor milliseconds and peak kilobytes of a function's programs.
export -f ours ffmpegOf rawOf
export work vistrane
measure() {
    local from=$EPOCHREALTIME to
    /usr/bin/time -o "$work/time" -f '%U %S %M' bash -euc '"$@"' measure "$@"
    to=$EPOCHREALTIME
    awk -v wall=$(((${to/./} - ${from/./}) / 1000)) \
        '{ printf "%d %d %d\n", wall, ($1 + $2) * 1000, $3 }' "$work/time"
}

row() { # NAME SIZE COLUMN: from the lines of WORK/pairs, three numbers of ours and three of the peer
    awk -v name="$1" -v size="$2" -v column="$3" '
        function median(values, n,   i, j, t) {
            for (i = 2; i <= n; i++) {
                for (j = i; j > 1 && values[j - 1] > values[j]; j--) {
                    t = values[j]; values[j] = values[j - 1]; values[j - 1] = t
                }
            }
            return n % 2 ? values[(n + 1) / 2] : (values[n / 2] + values[n / 2 + 1]) / 2
        }
        { a[NR] = $column; b[NR] = $(column + 3); r[NR] = $column / $(column + 3) }
        END {
            ratio = median(r, NR)
            printf "%s\tcamera\t%s\t%d\t%d\t%.3f\t%.3f\n", name, size, median(a, NR), median(b, NR),
                   ratio, r[NR] - r[1]
        }' "$work/pairs"
}

pair() { # NAME SIZE OURS... -- PEER...
    local name=$1 size=$2 mine=() run
    shift 2
    while [ "$1" != -- ]; do
        mine+=("$1")
        shift
    done
    shift
    : >"$work/pairs"
    for ((run = 0; run < runs; ++run)); do
        echo "$(measure "${mine[@]}") $(measure "$@")" >>"$work/pairs"
    done
    row "$name" "$size" 1
    row "$name-cpu" "$size" 2
    row "$name-memory" "$size" 3
}

likeness() { # FILTER MOVIE REFERENCE: psnr's luma or ssim's All
    ffmpeg -nostdin -i "$2" -i "$3" -lavfi "$1" -f null - 2>&1 |
        sed -n -e 's/.*PSNR y:\([0-9.]*\).*/\1/p' -e 's/.*All:\([0-9.]*\).*/\1/p'
}

frameCount() {
    ffprobe -v error -count_packets -show_entries stream=nb_read_packets -of csv=p=0 "$1"
}

plainRow() { # NAME SIZE OURS PEER
    awk -v OFS='\t' -v name="$1" -v size="$2" -v a="$3" -v b="$4" \
        'BEGIN { print name, "camera", size, a, b, sprintf("%.4f", a / b), 0 }'
}

references() { # FOLDER: what either encodes, as it is
    ours "$1" --x264-preset ultrafast --crf 0
    mv "$work/ours.mov" "$work/$1-ours.mov"
    ffmpegOf "$1" -vf "$toBt709" "${lossless[@]}"
    mv "$work/peer.mov" "$work/$1-peer.mov"
}

checkEqual() { # FOLDER PRESET
    ours "$1" --x264-preset "$2" --crf 23
    ffmpegOf "$1" -vf "$toBt709" -preset "$2" -crf 23
    if [ "$(frameCount "$work/ours.mov")" != "$(frameCount "$work/peer.mov")" ]; then
        echo "compile.sh: the movies of $1 differ in their number of frames" >&2
        exit 1
    fi
    awk -v preset="$2" -v a="$(likeness psnr "$work/ours.mov" "$work/$1-ours.mov")" \
        -v b="$(likeness psnr "$work/peer.mov" "$work/$1-peer.mov")" 'BEGIN {
            if (a < b - 0.05 || a > b + 0.05) {
                print "compile.sh: " preset ": PSNR " a " and " b > "/dev/stderr"
                exit 1
            }
        }'
}

frames hd 150 1920 1080
references hd
for preset in veryfast medium; do
    checkEqual hd "$preset"
    pair "compile-$preset" 1920x1080 ours hd --x264-preset "$preset" --crf 23 -- \
        ffmpegOf hd -vf "$toBt709" -preset "$preset" -crf 23
done

ffmpeg -v error -nostdin -y -i "$work/hd-ours.mov" -f rawvideo "$work/hd.yuv"
pair compile-limit-veryfast 1920x1080 ours hd --x264-preset veryfast --crf 23 -- \
    rawOf hd 1920x1080 -preset veryfast -crf 23
rm "$work/hd.yuv"

pair compile-default 1920x1080 ours hd -- ffmpegOf hd -pix_fmt yuv420p
plainRow compile-default-bytes 1920x1080 "$(stat -c %s "$work/ours.mov")" "$(stat -c %s "$work/peer.mov")"
mv "$work/ours.mov" "$work/default.mov"
ffmpegOf hd -pix_fmt yuv420p "${lossless[@]}"
mv "$work/peer.mov" "$work/hd-peer.mov"
ffmpegOf hd -pix_fmt yuv420p
plainRow compile-default-ssim 1920x1080 "$(likeness ssim "$work/default.mov" "$work/hd-ours.mov")" \
    "$(likeness ssim "$work/peer.mov" "$work/hd-peer.mov")"
rm -f "$work"/hd-*.mov

frames uhd 60 3840 2160
pair compile-veryfast 3840x2160 ours uhd --x264-preset veryfast --crf 23 -- \
    ffmpegOf uhd -vf "$toBt709" -preset veryfast -crf 23
