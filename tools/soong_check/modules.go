// The module types of the device build. Debian's soong_build registers none of the cc ones, so the
// check builds its own from cmd/soong_build and this file.
package main

import (
	_ "android/soong/cc"
	_ "android/soong/etc"
	_ "android/soong/genrule"
	_ "android/soong/phony"
	_ "android/soong/sh"
)
