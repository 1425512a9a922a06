// The version that the build states; a build without one is a developer's.

#ifndef SAMPLES_PROOF_VERSION_H
#define SAMPLES_PROOF_VERSION_H

#ifndef VASKEL_VERSION
#define VASKEL_VERSION "unversioned"
#endif

#endif
