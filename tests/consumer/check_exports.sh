#!/usr/bin/env bash
# The shared library exports its interface and nothing that is internal.
set -euo pipefail
symbols=$(nm -D --defined-only -C "$1" | cut -d' ' -f3-)
for wanted in 'VKCLProfileHandler::WriteVKColorParamTag' 'VKCLProfile::WriteMultiVKPrivateTags' \
  'SplitParam::ConvertToV4' 'CLNewCLLink8Ref' 'NewSplitTypeV2Array' 'vkcl::ReadStoredSplit'; do
  grep -qF "$wanted" <<<"$symbols" || {
    echo "not exported: $wanted"
    exit 1
  }
done
if grep -E '^vkcl::(host|RewriteFile|ReadWholeFile)|^cms' <<<"$symbols"; then
  echo "internal names are exported"
  exit 1
fi
echo "$(wc -l <<<"$symbols") symbols, none of them internal"
