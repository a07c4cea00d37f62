#!/usr/bin/env bash
# Makes the test data that only Linux tools can make: BMPs written by
# ImageMagick, and the bmpsuite reference renderings as binary PPM files.
#   prepare-testdata.sh <out-dir> <shared-dir> <source-dir>
set -eu
out=$1 shared=$2 src=$3
rm -rf "$out" && mkdir -p "$out/im" "$out/bmpsuite" "$out/out"
cp -r "$src/data" "$out/data"
cd "$out/im"
# A 16 x 8 picture with four coloured quadrants, in every format the reader must take.
convert -size 8x4 xc:red -size 8x4 xc:lime +append \( -size 8x4 xc:blue -size 8x4 xc:white +append \) -append src.png
convert src.png -type TrueColor BMP3:rgb24-info.bmp
convert src.png -type TrueColor BMP2:rgb24-core.bmp
convert src.png -type Palette BMP3:pal8-info.bmp
convert src.png -type Palette BMP2:pal8-core.bmp
convert src.png -colors 4 -type Palette -depth 4 BMP3:pal4-info.bmp
convert src.png -colors 4 -type Palette -depth 4 BMP2:pal4-core.bmp
convert -size 16x8 pattern:checkerboard -monochrome BMP3:pal1-info.bmp
convert -size 16x8 pattern:checkerboard -monochrome BMP2:pal1-core.bmp
convert pal1-info.bmp -type TrueColor -depth 8 PPM:pal1.ppm
convert src.png -depth 8 PPM:src.ppm
# The same picture as a bare DIB: the file without its 14-byte file header.
tail -c +15 rgb24-info.bmp > rgb24-bare.dib
if [ -d "$shared/testdata/bmpsuite" ]; then
  cp -r "$shared/testdata/bmpsuite/g" "$shared/testdata/bmpsuite/q" "$out/bmpsuite/"
  for f in "$shared"/testdata/bmpsuite/reference/*.png; do
    convert "$f" -background black -alpha remove -depth 8 PPM:"$out/bmpsuite/$(basename "${f%.png}").ppm"
  done
  echo "bmpsuite references converted"
else
  echo "no shared/testdata/bmpsuite here: the bmpsuite comparisons will skip"
fi
echo "test data in $out"
