#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# aar.sh [WORK]: makes the AAR and holds what it says of its libraries against
# the libraries, and the Java class against its own; builds a C program from its
# contents alone and runs it where ANDROID_RUNTIME has run32 and run64. Needs
# ANDROID_NDK_HOME and a JDK.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-$root/build/aar-test}
tools=$(echo "${ANDROID_NDK_HOME:?}"/toolchains/llvm/prebuilt/*/bin)
rm -rf "$work"
mkdir -p "$work"

refuse() {
  echo "aar: $*" >&2
  exit 1
}
same() { # same FILE TEXT: but for spaces
  [[ $(tr -d ' \n' <"$1") == "$2" ]] || refuse "$1 is not $2"
}

aar=$("$root/scripts/aar.sh" "$work/one")
sleep 2 # the steps of times in archives
cmp "$aar" "$("$root/scripts/aar.sh" "$work/two")"
version=$(sed -n 's/^#define ORUMLOX_VERSION_[A-Z]* //p' \
  "$root/include/orumlox/version.h" | paste -sd .)
[[ $aar == */orumlox-$version.aar ]] || refuse "named $aar"
unzip -q "$aar" -d "$work/aar"
cd "$work/aar"
# One class, of Java 8, and none of the stand-ins that it was compiled against.
[[ $(unzip -Z1 classes.jar | paste -s -d ' ') == \
  "META-INF/MANIFEST.MF org/orumlox/CameraToRgb.class" ]] || refuse "classes"
javap -v -private -cp classes.jar org.orumlox.CameraToRgb >"$work/class"
grep -q '^  major version: 52$' "$work/class" || refuse "not of Java 8"
natives=$(sed -n 's/^  .*static native .* \([A-Za-z]*\)(.*/Java_org_orumlox_CameraToRgb_\1/p' \
  "$work/class" | LC_ALL=C sort)
[[ -n $natives ]] || refuse "no native methods"
grep -q 'class org.orumlox.\*\* { native' proguard.txt || refuse "names are lost"

module=prefab/modules/orumlox
same prefab/prefab.json \
  "{\"schema_version\":2,\"name\":\"orumlox\",\"version\":\"$version\",\"dependencies\":[]}"
same $module/module.json \
  '{"export_libraries":[],"android":{"library_name":"liborumlox"}}'
grep -q 'package="org.orumlox"' AndroidManifest.xml || refuse "no package"
diff -r "$root/include" $module/include >&2

abis=
for library in $module/libs/*/liborumlox.so; do
  folder=$(dirname "$library")
  abi=${folder##*/android.}
  # Header of a note of 20 bytes, API level, name of the NDK.
  "$tools/llvm-objcopy" --dump-section ".note.android.ident=$work/note" \
    "$library" "$work/copy.so"
  api=$(od -An -td4 -j20 -N4 "$work/note" | tr -d ' ')
  ndk=$(od -An -c -j24 -N64 "$work/note" | tr -d ' \n' | sed 's/^r\([0-9]*\).*/\1/')
  # This holds the ABI against the machine, and that nothing of C++ is needed.
  "$root/tests/audit/android_library.sh" "$library" "$abi" stripped
  same "$folder/abi.json" \
    "{\"abi\":\"$abi\",\"api\":$api,\"ndk\":$ndk,\"stl\":\"none\",\"static\":false}"
  [[ $api == 21 ]] || refuse "$abi: API $api"
  grep -q "minSdkVersion=\"$api\"" AndroidManifest.xml || refuse "API $api"
  "$tools/llvm-readelf" -n "$library" | grep 'Build ID' >"$work/id"
  "$tools/llvm-readelf" -n "$root/build/android-$abi/liborumlox.so" |
    grep -qFf "$work/id" || refuse "$abi: symbols of another build"
  # What the class calls is there, and nothing else to be seen.
  jni=jni/$abi/liborumlox_jni.so
  "$root/tests/audit/android_library.sh" "$jni" "$abi" stripped
  "$tools/llvm-nm" -D --defined-only -P "$jni" | cut -d ' ' -f 1 |
    LC_ALL=C sort | diff - <(echo "$natives") >&2
  abis+="$abi "
done
[[ $abis == "arm64-v8a armeabi-v7a x86 x86_64 " ]] || refuse "ABIs: $abis"

# The program, of the AAR's headers and libraries.
mkdir "$work/app"
cp "$root/tests/api/c_caller.c" "$work/app"
cat >"$work/app/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(app C)
add_executable(app c_caller.c)
target_include_directories(app PRIVATE $work/aar/$module/include)
target_link_libraries(app $work/aar/$module/libs/android.\${ANDROID_ABI}/liborumlox.so)
END
for abi in armeabi-v7a:run32 arm64-v8a:run64; do
  run=${ANDROID_RUNTIME:+$ANDROID_RUNTIME/${abi#*:}}
  abi=${abi%:*}
  {
    cmake -S "$work/app" -B "$work/$abi" -G Ninja -DANDROID_ABI="$abi" \
      -DANDROID_PLATFORM=android-21 -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_TOOLCHAIN_FILE="$ANDROID_NDK_HOME/build/cmake/android.toolchain.cmake" &&
      cmake --build "$work/$abi"
  } >"$work/app.log" 2>&1 || refuse "$(cat "$work/app.log")"
  if [[ -n $run ]]; then
    ANDROID_LIBS=$work/aar/$module/libs/android.$abi "$run" "$work/$abi/app" ||
      refuse "the program for $abi failed"
  fi
done
echo "$(basename "$aar"): $abis${ANDROID_RUNTIME:+, run on Android}"
