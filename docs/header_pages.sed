# Makes the comment at the top of a header one that doxygen reads, as the page of that file. Lines
# keep their numbers: the guard makes room for the added one.
1i\
/// @file
1,/^#pragma once/ {
  s,^//$,///,
  s,^// ,/// ,
  /^#pragma once/d
}
