#!/bin/sh
# The sample host's main job on the sample input: run_sample.sh BUILD OUT
set -eu
build=$1
out=$2
samples=$(dirname "$(dirname "$0")")
"$build/samples/vaskel-proof" make --force --scan "$samples/data/scan.tif" \
    --image "$samples/data/picture.jpg" --cmyk-profile "$samples/data/FOGRA39L_coated.icc" \
    -o "$out/proof.pdf" --ps "$out/proof.ps" --json "$out/proof.json"
"$build/samples/vaskel-proof" trace --force "$samples/data/scan.tif" \
    -o "$out/scan.svg" -o "$out/scan.pdf"
