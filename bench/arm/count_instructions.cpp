// A plugin for qemu-user: counts the instructions that a program executes between `hint #0x70` and
// `hint #0x71`, which do nothing on a processor, and prints the number at each of the latter.
//
// The emulator's plugin header is not packaged in Debian 12; what is used of it is declared here.
#include <cstdint>
#include <cstdio>
#include <cstring>

extern "C" {
struct qemu_plugin_tb;
struct qemu_plugin_insn;
struct qemu_info_t;
enum qemu_plugin_cb_flags { QEMU_PLUGIN_CB_NO_REGS };
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t id, void (*cb)(uint64_t, qemu_plugin_tb*));
size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* tb);
qemu_plugin_insn* qemu_plugin_tb_get_insn(const qemu_plugin_tb* tb, size_t index);
const void* qemu_plugin_insn_data(const qemu_plugin_insn* insn);
void qemu_plugin_register_vcpu_insn_exec_cb(qemu_plugin_insn* insn, void (*cb)(unsigned, void*),
                                            qemu_plugin_cb_flags flags, void* data);
void qemu_plugin_register_vcpu_insn_exec_inline(qemu_plugin_insn* insn, qemu_plugin_op op,
                                                void* counter, uint64_t add);

#define EXPORTED __attribute__((visibility("default")))
EXPORTED int qemu_plugin_version = 1;
EXPORTED int qemu_plugin_install(uint64_t id, const qemu_info_t* info, int argc, char** argv);
}

namespace {

constexpr uint32_t Hint(uint32_t number) {
    return 0xD503201Fu | number << 5;
}

uint64_t executed = 0;
uint64_t executedAtStart = 0;

void Start(unsigned, void*) {
    executedAtStart = executed;
}

void Stop(unsigned, void*) {
    std::printf("%llu\n", static_cast<unsigned long long>(executed - executedAtStart));
    std::fflush(stdout);
}

void Translated(uint64_t, qemu_plugin_tb* block) {
    for (size_t i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
        qemu_plugin_insn* insn = qemu_plugin_tb_get_insn(block, i);
        uint32_t word;
        std::memcpy(&word, qemu_plugin_insn_data(insn), sizeof word);
        if (word == Hint(0x70) || word == Hint(0x71)) {
            qemu_plugin_register_vcpu_insn_exec_cb(insn, word == Hint(0x70) ? Start : Stop,
                                                   QEMU_PLUGIN_CB_NO_REGS, nullptr);
        } else {
            qemu_plugin_register_vcpu_insn_exec_inline(insn, QEMU_PLUGIN_INLINE_ADD_U64, &executed,
                                                       1);
        }
    }
}

}  // namespace

int qemu_plugin_install(uint64_t id, const qemu_info_t*, int, char**) {
    qemu_plugin_register_vcpu_tb_trans_cb(id, Translated);
    return 0;
}
