#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the library for the four Android ABIs and packs it with its headers as
# OUT/orumlox-VERSION.aar, with Prefab's metadata, beside the Java class
# org.orumlox.CameraToRgb and its own libraries, and prints that path:
#   ANDROID_NDK_HOME=... scripts/aar.sh [OUT]
# OUT is build/aar if not given. The same sources, path, NDK and JDK give the same
# bytes. Libraries are stripped; build/android-ABI/liborumlox.so and
# liborumlox_jni.so are those with symbols, of the same build-ids.
set -eu

cd "$(dirname "$0")/.."
out=${1:-build/aar}
if [ ! -r "${ANDROID_NDK_HOME:-}/source.properties" ]; then
  echo "aar: set ANDROID_NDK_HOME to the folder of an NDK" >&2
  exit 1
fi
for tool in cmake ninja zip javac; do
  command -v "$tool" >/dev/null || {
    echo "aar: $tool is missing (Debian: cmake, ninja-build, zip," \
      "default-jdk-headless)" >&2
    exit 1
  }
done
ndk=$(sed -n 's/^Pkg\.Revision *= *\([0-9]*\)\..*/\1/p' \
  "$ANDROID_NDK_HOME/source.properties")

mkdir -p "$out"
out=$(cd "$out" && pwd)
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
aar=$stage/aar
module=$aar/prefab/modules/orumlox
mkdir -p "$module/libs"

cached() { # cached ABI NAME: a value of the build folder's cache
  sed -n "s/^$2:[^=]*=//p" "build/android-$1/CMakeCache.txt"
}

for abi in armeabi-v7a arm64-v8a x86 x86_64; do
  {
    cmake --preset "android-$abi" &&
      cmake --build "build/android-$abi" --target orumlox orumlox_jni &&
      cmake --install "build/android-$abi" --prefix "$stage/$abi" --component runtime &&
      cmake --install "build/android-$abi" --prefix "$stage/$abi" --component jni
  } >"$out/$abi.log" 2>&1 || {
    tail -n 40 "$out/$abi.log" >&2
    echo "aar: the build for $abi failed; its output is in $out/$abi.log" >&2
    exit 1
  }
  libs=$module/libs/android.$abi
  mkdir "$libs"
  mv "$stage/$abi/lib/liborumlox.so" "$libs"
  mkdir -p "$aar/jni/$abi"
  mv "$stage/$abi/lib/liborumlox_jni.so" "$aar/jni/$abi"
  api=$(cached "$abi" ANDROID_PLATFORM)
  cat >"$libs/abi.json" <<END
{
  "abi": "$abi",
  "api": ${api#android-},
  "ndk": $ndk,
  "stl": "none",
  "static": false
}
END
done
cp -R include "$module/include"
version=$(cached x86 CMAKE_PROJECT_VERSION)

cat >"$aar/prefab/prefab.json" <<END
{
  "schema_version": 2,
  "name": "orumlox",
  "version": "$version",
  "dependencies": []
}
END
cat >"$module/module.json" <<END
{
  "export_libraries": [],
  "android": { "library_name": "liborumlox" }
}
END
cat >"$aar/AndroidManifest.xml" <<END
<?xml version="1.0" encoding="utf-8"?>
<manifest xmlns:android="http://schemas.android.com/apk/res/android"
    package="org.orumlox"
    android:versionName="$version">
  <uses-sdk android:minSdkVersion="21" />
</manifest>
END

# What packs neither times, owners, folders nor an order of its own.
pack() { # pack ARCHIVE FILE...
  find . -type f -exec chmod 644 {} + -exec touch -d 1980-01-01T00:00:00Z {} +
  TZ=UTC zip -q -X -D "$@"
}
# The class alone, compiled against stand-ins for Android's, in the bytecode that
# its tools take. What Java calls keeps its name.
class=org/orumlox/CameraToRgb
mkdir -p "$stage/classes" "$stage/jar/META-INF" "$stage/jar/org/orumlox"
javac --release 8 -Xlint:all -Xlint:-options -Werror -sourcepath \
  android/java:android/standin -d "$stage/classes" "android/java/$class.java" >&2
mv "$stage/classes/$class.class" "$stage/jar/$class.class"
cd "$stage/jar"
printf 'Manifest-Version: 1.0\r\n\r\n' >META-INF/MANIFEST.MF
pack "$aar/classes.jar" META-INF/MANIFEST.MF "$class.class"
cd "$aar"
# The Android plug-in wants resources, of which there are none.
: >R.txt
cat >proguard.txt <<END
-keepclasseswithmembernames class org.orumlox.** { native <methods>; }
END
archive=$out/orumlox-$version.aar
rm -f "$archive"
# The names of this project's files are words: word splitting is meant.
# shellcheck disable=SC2046
pack "$archive" $(find . -type f | LC_ALL=C sort | sed 's|^\./||')
echo "$archive"
