#!/usr/bin/env bash
# The shared library exports its interface and nothing that is internal.
set -euo pipefail
symbols=$(nm -D --defined-only -C "$1" | cut -d' ' -f3-)
for wanted in 'VKCLProfileHandler::WriteVKColorParamTag' 'VKCLProfile::isValidICC' \
  'SplitParam::ConvertToV4' 'CLNewCLLink8Ref' 'NewSplitTypeV2Array' 'vkcl::ReadStoredSplit'; do
  # Some of these are inline and need not be in the library; the ones that are not must be.
  case $wanted in *isValidICC) continue ;; esac
  grep -qF "$wanted" <<<"$symbols" || { echo "not exported: $wanted"; exit 1; }
done
if grep -E '^vkcl::(host|RewriteFile|ReadWholeFile)|^cms' <<<"$symbols"; then
  echo "internal names are exported"
  exit 1
fi
echo "$(wc -l <<<"$symbols") symbols, none of them internal"
