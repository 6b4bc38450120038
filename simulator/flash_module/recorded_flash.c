// SPDX-License-Identifier: GPL-2.0 OR MIT
//
// A NAND flash in memory that records every page program and every erase, so that its state after
// each of them, or halfway through it, can be restored.
//
// "/proc/recorded_flash": writing "begin" takes the present content as the initial state; writing
// "<n>" restores the state after n operations, and "<n> half" the state halfway through the next
// one. Reading returns the number of operations. Nothing may use the flash meanwhile.

#include <linux/module.h>
#include <linux/mtd/mtd.h>
#include <linux/proc_fs.h>
#include <linux/seq_file.h>
#include <linux/uaccess.h>
#include <linux/vmalloc.h>

#define PAGE_BYTES 2048
#define BLOCK_BYTES (64 * PAGE_BYTES)
#define BLOCKS 96
#define FLASH_BYTES (BLOCKS * BLOCK_BYTES)
#define MOST_OPERATIONS 20000

struct operation {
	u32 at;
	u8 *page; /* null for an erase */
};

static u8 *flash, *beginning;
static struct operation *operations;
static unsigned int count;
static bool recording;

static int record(u32 at, const u8 *page)
{
	struct operation *next = &operations[count];

	if (!recording)
		return 0;
	if (count == MOST_OPERATIONS)
		return -ENOSPC;
	next->at = at;
	next->page = NULL;
	if (page) {
		next->page = vmalloc(PAGE_BYTES);
		if (!next->page)
			return -ENOMEM;
		memcpy(next->page, page, PAGE_BYTES);
	}
	++count;
	return 0;
}

static void perform(const struct operation *done, bool half)
{
	u32 size = done->page ? PAGE_BYTES : BLOCK_BYTES;

	if (half)
		size /= 2;
	if (done->page)
		memcpy(flash + done->at, done->page, size);
	else
		memset(flash + done->at, 0xff, size);
}

static int flash_read(struct mtd_info *mtd, loff_t from, size_t size, size_t *done, u_char *to)
{
	memcpy(to, flash + from, size);
	*done = size;
	return 0;
}

static int flash_write(struct mtd_info *mtd, loff_t to, size_t size, size_t *done,
		       const u_char *from)
{
	for (*done = 0; *done < size; *done += PAGE_BYTES) {
		int error = record(to + *done, from + *done);

		if (error)
			return error;
		memcpy(flash + to + *done, from + *done, PAGE_BYTES);
	}
	return 0;
}

static int flash_erase(struct mtd_info *mtd, struct erase_info *info)
{
	u32 at;

	for (at = info->addr; at < info->addr + info->len; at += BLOCK_BYTES) {
		int error = record(at, NULL);

		if (error)
			return error;
		memset(flash + at, 0xff, BLOCK_BYTES);
	}
	return 0;
}

static int flash_block_isbad(struct mtd_info *mtd, loff_t at)
{
	return 0;
}

static struct mtd_info device = {
	.name = "recorded",
	.type = MTD_NANDFLASH,
	.flags = MTD_CAP_NANDFLASH,
	.size = FLASH_BYTES,
	.erasesize = BLOCK_BYTES,
	.writesize = PAGE_BYTES,
	.writebufsize = PAGE_BYTES,
	.owner = THIS_MODULE,
	._read = flash_read,
	._write = flash_write,
	._erase = flash_erase,
	._block_isbad = flash_block_isbad,
};

static void put_back(unsigned int number, bool half)
{
	unsigned int i;

	recording = false;
	memcpy(flash, beginning, FLASH_BYTES);
	for (i = 0; i < number; ++i)
		perform(&operations[i], false);
	if (half && number < count)
		perform(&operations[number], true);
}

static ssize_t take_request(struct file *file, const char __user *from, size_t size, loff_t *at)
{
	char text[32] = "", word[8] = "";
	unsigned int number;

	if (size >= sizeof(text) || copy_from_user(text, from, size))
		return -EINVAL;
	if (!strncmp(text, "begin", 5)) {
		memcpy(beginning, flash, FLASH_BYTES);
		recording = true;
	} else if (sscanf(text, "%u %7s", &number, word) >= 1 && number <= count) {
		put_back(number, !strcmp(word, "half"));
	} else {
		return -EINVAL;
	}
	return size;
}

static int show_count(struct seq_file *to, void *unused)
{
	seq_printf(to, "%u\n", count);
	return 0;
}

static int open_file(struct inode *inode, struct file *file)
{
	return single_open(file, show_count, NULL);
}

static const struct proc_ops file_operations = {
	.proc_open = open_file,
	.proc_read = seq_read,
	.proc_release = single_release,
	.proc_write = take_request,
};

static int __init enter(void)
{
	flash = vmalloc(FLASH_BYTES);
	beginning = vmalloc(FLASH_BYTES);
	operations = vzalloc(array_size(MOST_OPERATIONS, sizeof(*operations)));
	if (!flash || !beginning || !operations ||
	    !proc_create("recorded_flash", 0600, NULL, &file_operations))
		return -ENOMEM;
	memset(flash, 0xff, FLASH_BYTES);
	return mtd_device_register(&device, NULL, 0);
}

module_init(enter);
MODULE_LICENSE("Dual MIT/GPL");
MODULE_DESCRIPTION("NAND flash in memory that can be put back to each moment");
