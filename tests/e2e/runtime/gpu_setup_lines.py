"""What gpu-setup deals with and what it prints."""

CPU, GPU, DIRECTML = "onnxruntime", "onnxruntime-gpu", "onnxruntime-directml"
CUDA_LIBRARIES = {"nvidia-cuda-runtime-cu12": "12.0", "nvidia-cudnn-cu12": "12.0"}
ONLY_CPU = {CPU: "1.19.2"}
ONLY_GPU = {GPU: "1.19.2", **CUDA_LIBRARIES}
SETTING_UP = """
🔧 Setting up {0} backend...
   (atomic: install new → verify → remove old; rollback on failure)
"""
DONE = """
✅ Done. Use --backend {0} to enable:
   zv-anpr photo.jpg --backend {0}
   zv-anpr server start  (set backend in server_config.yaml)
"""
CPU_WORKS = """
🔍 Verifying...
✅ CPUExecutionProvider is available!
   Providers: CPUExecutionProvider
""" + DONE.format("cpu")
CUDA_WORKS = """
🔍 Verifying...
✅ CUDAExecutionProvider is available!
   Providers: CUDAExecutionProvider, CPUExecutionProvider
   GPU ready: onnxruntime starts CUDA
""" + DONE.format("cuda")
