#!/usr/bin/env bash
# Builds a real llama-server (CPU) from the llama.cpp sources inside llama-cpp-python's source
# package, for test_mmc_real_llama_server.py. Needs pip, cmake, a C++ compiler; some 10 minutes.
# usage: build_llama_server.sh FOLDER   (prints the path of the executable last)
set -eu
folder=$(mkdir -p "$1" && cd "$1" && pwd)
cd "$folder"
python3 -m pip download --quiet --no-deps --no-binary :all: --dest . llama-cpp-python
tar xzf llama_cpp_python-*.tar.gz
cmake -S llama_cpp_python-*/vendor/llama.cpp -B build -DCMAKE_BUILD_TYPE=Release \
  -DGGML_NATIVE=OFF -DLLAMA_OPENSSL=OFF -DLLAMA_BUILD_TESTS=OFF -DLLAMA_BUILD_EXAMPLES=OFF \
  -DLLAMA_BUILD_UI=OFF -DLLAMA_USE_PREBUILT_UI=OFF >/dev/null
cmake --build build --target llama-server --parallel "${JOBS:-2}" >/dev/null
echo "$folder/build/bin/llama-server"
