#!/bin/sh
# Fetches the headers of the installed OpenFOAM, which Debian's binary packages leave out.
#
#   get_headers.sh FOLDER    ->  FOLDER/openfoam-VERSION/src/LIBRARY/lnInclude
#
# They come from the source package of exactly the installed version (about 45 MB), through an index of packages inside
# FOLDER: the system's own stays as it is. The headers of each library are linked into its folder lnInclude, as the
# compiler expects them. wmake comes along, in FOLDER/openfoam-VERSION/wmake. The last line printed is the folder with the
# sources. What is there already is kept.
#
# Needs apt, dpkg-dev and the package openfoam.
set -eu

libraries='OpenFOAM OSspecific/POSIX finiteVolume meshTools sampling fileFormats surfMesh dynamicMesh dynamicFvMesh'

if [ $# -ne 1 ]; then
    echo "usage: get_headers.sh FOLDER" >&2
    exit 2
fi
for tool in apt-get dpkg-query dpkg-source; do
    command -v "$tool" > /dev/null || { echo "get_headers.sh: $tool is needed (packages apt, dpkg, dpkg-dev)" >&2; exit 1; }
done
version=$(dpkg-query -W -f '${source:Version}' libopenfoam 2> /dev/null) ||
    { echo "get_headers.sh: the package openfoam is not installed" >&2; exit 1; }

mkdir -p "$1"
folder=$(cd "$1" && pwd)
sources=$folder/openfoam-${version%-*}

if [ ! -e "$sources/.unpacked" ]; then
    # Entries for sources, from the entries for binary packages in either format.
    mkdir -p "$folder/apt/parts" "$folder/apt/lists/partial" "$folder/apt/cache/archives/partial"
    : > "$folder/apt/none"
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -e "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" > "$folder/apt/parts/${file##*/}"
    done
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -e "$file" ] && sed -n 's/^deb /deb-src /p' "$file" > "$folder/apt/parts/${file##*/}.list"
    done
    private() {
        apt-get -q -o Dir::Etc::SourceList="$folder/apt/none" -o Dir::Etc::SourceParts="$folder/apt/parts" \
            -o Dir::State::Lists="$folder/apt/lists" -o Dir::Cache="$folder/apt/cache" -o APT::Sandbox::User= "$@" \
            >> "$folder/apt/log" 2>&1 || { tail -5 "$folder/apt/log" >&2; exit 1; }
    }
    private update
    # Unpacked aside, so that an interrupted run leaves nothing that looks complete.
    unpacked=$(mktemp -d "$folder/unpack.XXXXXX")
    (cd "$unpacked" && private source "openfoam=$version")
    touch "$unpacked/${sources##*/}/.unpacked"
    mv "$unpacked/${sources##*/}" "$sources"
    rm -r "$unpacked"
fi

cd "$sources"
for library in $libraries; do
    [ -d "src/$library/lnInclude" ] || wmake/wmakeLnInclude "src/$library" > /dev/null 2>&1
done
echo "$sources"
