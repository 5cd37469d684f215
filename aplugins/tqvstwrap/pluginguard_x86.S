// The 32-bit guard routine: calls the body under a registration record linked at fs:[0].
    .intel_syntax noprefix
    .text

// GuardFrame's leading fields (pluginguard.cpp): the registration record, then the stack pointer to
// land with.
    .set FRAME_NEXT, 0
    .set FRAME_HANDLER, 4
    .set FRAME_STACK_POINTER, 8

// int __cdecl tq_guard_call(GuardFrame* frame, void (*body)(void*), void* arg)
    .globl _tq_guard_call
    .def _tq_guard_call; .scl 2; .type 32; .endef
_tq_guard_call:
    push ebp
    push ebx
    push esi
    push edi
    mov ebx, [esp+20]
    mov eax, fs:[0]
    mov [ebx+FRAME_NEXT], eax
    mov dword ptr [ebx+FRAME_HANDLER], offset _tq_guard_handler
    mov [ebx+FRAME_STACK_POINTER], esp
    mov fs:[0], ebx
    push dword ptr [esp+28]
    call dword ptr [esp+28]
    add esp, 4
    mov eax, [ebx+FRAME_NEXT]
    mov fs:[0], eax
    mov eax, 1
.Lrestore:
    pop edi
    pop esi
    pop ebx
    pop ebp
    ret

// void __cdecl tq_guard_unwind(GuardFrame* frame, EXCEPTION_RECORD* record)
// From the handler of a guard that stops an exception: runs and unlinks the handlers above the
// guard's record, then returns 0 from its tq_guard_call. Reads its arguments from the stack again
// after RtlUnwind, which need not preserve ebx, esi and edi.
    .globl _tq_guard_unwind
    .def _tq_guard_unwind; .scl 2; .type 32; .endef
_tq_guard_unwind:
    mov eax, [esp+4]
    mov ecx, [esp+8]
    push 0
    push ecx
    push offset 1f
    push eax
    call _RtlUnwind@16
1:
    mov eax, [esp+4]
    mov esp, [eax+FRAME_STACK_POINTER]
    mov ecx, [eax+FRAME_NEXT]
    mov fs:[0], ecx
    xor eax, eax
    jmp .Lrestore
