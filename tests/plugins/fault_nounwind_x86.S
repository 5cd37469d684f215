// Code as tools without unwind data emit it: a routine calling one that writes to address 0.
    .intel_syntax noprefix
    .text

// void __cdecl tq_nounwind_write_null(void)
    .globl _tq_nounwind_write_null
_tq_nounwind_write_null:
    push ebp
    mov ebp, esp
    sub esp, 8
    call write_null
    leave
    ret

write_null:
    push ebx
    xor eax, eax
    mov dword ptr [eax], 1
    pop ebx
    ret
